#include "junitwriter.h"

#include "report.h"

#include <QDateTime>
#include <QHostInfo>
#include <QSaveFile>
#include <QXmlStreamWriter>

namespace JUnitWriter {

namespace {
// XML 1.0 has no place for most control characters (a terminal's escapes, say): they become U+FFFD.
QString xmlText(const QString &text)
{
    QString clean = text;
    for (QChar &c : clean) {
        const ushort u = c.unicode();
        if ((u < 0x20 && u != '\t' && u != '\n' && u != '\r') || u == 0xFFFE || u == 0xFFFF) {
            c = QChar(0xFFFD);
        }
    }
    return clean;
}

QString seconds(double value)
{
    return QString::number(value, 'f', 3);
}

void testcase(QXmlStreamWriter &xml, const Entry &entry)
{
    const Outcome &o = entry.outcome;
    const bool ran = o.seconds > 0 || o.kind == Outcome::Kind::Passed || o.kind == Outcome::Kind::Failed;
    xml.writeStartElement(QStringLiteral("testcase"));
    xml.writeAttribute(QStringLiteral("name"), xmlText(entry.scenario.name));
    xml.writeAttribute(QStringLiteral("classname"), xmlText(entry.scenario.group));
    xml.writeAttribute(QStringLiteral("file"), xmlText(entry.scenario.path));
    if (o.line > 0) {
        xml.writeAttribute(QStringLiteral("line"), QString::number(o.line));
    }
    xml.writeAttribute(QStringLiteral("time"), seconds(ran ? o.seconds : o.totalSeconds));
    if (o.simulatedSeconds >= 0) {
        xml.writeStartElement(QStringLiteral("properties"));
        xml.writeStartElement(QStringLiteral("property"));
        xml.writeAttribute(QStringLiteral("name"), QStringLiteral("simulated_seconds"));
        xml.writeAttribute(QStringLiteral("value"), seconds(o.simulatedSeconds));
        xml.writeEndElement();
        xml.writeEndElement();
    }
    switch (o.kind) {
    case Outcome::Kind::Passed:
        break;
    case Outcome::Kind::Failed:
        xml.writeStartElement(QStringLiteral("failure"));
        xml.writeAttribute(QStringLiteral("message"), xmlText(o.message));
        xml.writeAttribute(QStringLiteral("type"), QStringLiteral("KO"));
        xml.writeCharacters(xmlText(Report::details(o).join(QLatin1Char('\n'))));
        xml.writeEndElement();
        break;
    case Outcome::Kind::Error:
        xml.writeStartElement(QStringLiteral("error"));
        xml.writeAttribute(QStringLiteral("message"), xmlText(o.message));
        xml.writeAttribute(QStringLiteral("type"), QStringLiteral("error"));
        xml.writeCharacters(xmlText(Report::details(o).join(QLatin1Char('\n'))));
        xml.writeEndElement();
        break;
    case Outcome::Kind::Interrupted:
        xml.writeStartElement(QStringLiteral("skipped"));
        xml.writeAttribute(QStringLiteral("message"),
            xmlText(o.message.isEmpty() ? QStringLiteral("not run: interrupted") : o.message));
        xml.writeEndElement();
        break;
    }
    if (!o.events.isEmpty()) {
        xml.writeTextElement(
            QStringLiteral("system-out"), xmlText(o.events.join(QLatin1Char('\n')) + QLatin1Char('\n')));
    }
    if (!o.standardError.isEmpty()) {
        xml.writeTextElement(QStringLiteral("system-err"), xmlText(QString::fromLocal8Bit(o.standardError)));
    }
    xml.writeEndElement();
}
} // namespace

bool write(const QString &path, const QList<Entry> &entries, const QDateTime &started, double seconds, QString *error)
{
    int failures = 0;
    int errors = 0;
    int skipped = 0;
    for (const Entry &entry : entries) {
        failures += entry.outcome.kind == Outcome::Kind::Failed ? 1 : 0;
        errors += entry.outcome.kind == Outcome::Kind::Error ? 1 : 0;
        skipped += entry.outcome.kind == Outcome::Kind::Interrupted ? 1 : 0;
    }
    const auto counts = [&](QXmlStreamWriter &xml) {
        xml.writeAttribute(QStringLiteral("tests"), QString::number(entries.size()));
        xml.writeAttribute(QStringLiteral("failures"), QString::number(failures));
        xml.writeAttribute(QStringLiteral("errors"), QString::number(errors));
        xml.writeAttribute(QStringLiteral("skipped"), QString::number(skipped));
        xml.writeAttribute(QStringLiteral("time"), JUnitWriter::seconds(seconds));
    };

    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        *error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
        return false;
    }
    QXmlStreamWriter xml(&file);
    xml.setAutoFormatting(true);
    xml.writeStartDocument();
    xml.writeStartElement(QStringLiteral("testsuites"));
    xml.writeAttribute(QStringLiteral("name"), QStringLiteral("vantix-test"));
    counts(xml);
    xml.writeStartElement(QStringLiteral("testsuite"));
    xml.writeAttribute(QStringLiteral("name"), QStringLiteral("vantix-test"));
    counts(xml);
    xml.writeAttribute(QStringLiteral("timestamp"), started.toString(Qt::ISODate));
    xml.writeAttribute(QStringLiteral("hostname"), QHostInfo::localHostName());
    for (const Entry &entry : entries) {
        testcase(xml, entry);
    }
    xml.writeEndElement();
    xml.writeEndElement();
    xml.writeEndDocument();
    if (xml.hasError() || !file.commit()) {
        *error = QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
        return false;
    }
    return true;
}

} // namespace JUnitWriter
