// Fuzzes what the control server does with a client's bytes before any
// command runs, fast enough for millions of inputs: cutting the stream into
// lines, reading each line as a request, finding its id, and splitting its
// console line into words. The engine behind it is the control-line
// target's business.
//
// The input is the byte stream; its first byte also picks how it is cut into
// reads (from one byte each to 64 KiB), since a client's writes reach the
// server in pieces of any size. Each \x01 in it stands for 16 KiB of text,
// so that lines over the 64 KiB limit are a few bytes away while inputs stay
// small and quick.
//
// Checks: the lines, and the over-long lines reported, are those the whole
// stream holds, whatever the reads; a request's id as the server echoes it
// reads back as the value a JSON reader finds; and a console line's words,
// joined and quoted again, split back into the same words.

#include "controlconnection_p.h"
#include "fuzzsupport.h"
#include "linesplitter_p.h"
#include "protocol.h"
#include "words.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QVector>

#include <cstddef>
#include <cstdint>

using VantixControl::ControlConnection;
using VantixControl::LineSplitter;

namespace {

constexpr char Filler = '\x01';
constexpr int FillerBytes = 16 * 1024;

QByteArray inflated(const uint8_t *data, size_t size)
{
    const QByteArray input = QByteArray::fromRawData(reinterpret_cast<const char *>(data), int(size));
    if (!input.contains(Filler)) {
        return input;
    }
    QByteArray stream;
    stream.reserve(input.size() + input.count(Filler) * FillerBytes);
    for (const char c : input) {
        if (c == Filler) {
            stream.append(FillerBytes, 'x');
        } else {
            stream.append(c);
        }
    }
    return stream;
}

struct Piece
{
    LineSplitter::Result result;
    QByteArray line;
    bool operator==(const Piece &other) const { return result == other.result && line == other.line; }
};

// What the stream holds, read as a whole: every line up to its newline, less
// one \r before it; a line over the limit is reported, not given. What follows
// the last newline is reported only once it is already over the limit.
QVector<Piece> expectedPieces(const QByteArray &stream)
{
    QVector<Piece> pieces;
    QList<QByteArray> lines = stream.split('\n');
    const QByteArray unfinished = lines.takeLast();
    for (QByteArray line : qAsConst(lines)) {
        if (line.endsWith('\r')) {
            line.chop(1);
        }
        if (line.size() > VantixControl::Protocol::MaxLineBytes) {
            pieces.append({LineSplitter::TooLong, QByteArray()});
        } else {
            pieces.append({LineSplitter::Line, line});
        }
    }
    if (unfinished.size() - (unfinished.endsWith('\r') ? 1 : 0) > VantixControl::Protocol::MaxLineBytes) {
        pieces.append({LineSplitter::TooLong, QByteArray()});
    }
    return pieces;
}

// The stream as the server reads it, in reads whose sizes follow from @p seed.
QVector<Piece> splitInReads(const QByteArray &stream, quint8 seed)
{
    QVector<Piece> pieces;
    LineSplitter splitter;
    quint32 state = 0x9e3779b9u ^ (quint32(seed) * 0x01000193u);
    // Reads of at most 16 bytes, 256, 4 KiB or 64 KiB: tiny ones cost the most, so only a quarter has them.
    const quint32 largest = 16u << (4 * (seed & 3));
    for (int at = 0; at < stream.size();) {
        state ^= state << 13;
        state ^= state >> 17;
        state ^= state << 5;
        const int size = qMin(int(1 + state % largest), stream.size() - at);
        splitter.append(stream.constData() + at, size);
        at += size;
        QByteArray line;
        for (LineSplitter::Result result; (result = splitter.next(&line)) != LineSplitter::NeedMore;) {
            pieces.append({result, result == LineSplitter::Line ? line : QByteArray()});
        }
    }
    return pieces;
}

QString shown(const QStringList &words)
{
    return VantixControl::Words::printable(words.join(QLatin1String(" | ")));
}

void checkWords(const QString &text)
{
    using namespace VantixControl;
    QStringList words;
    QString error;
    if (!Words::split(text, &words, &error)) {
        FuzzSupport::check(!error.isEmpty(), "a line was refused without a reason");
        return;
    }
    const QString joined = Words::join(words);
    if (joined.contains(QLatin1Char('\n')) || joined.contains(QLatin1Char('\r'))) {
        FuzzSupport::fail("joined words are more than one line:", Words::printable(joined));
    }
    QStringList again;
    if (!Words::split(joined, &again, &error) || again != words) {
        FuzzSupport::fail("joined words split into others:", shown(words) + QLatin1String(" became ") + shown(again));
    }
}

void checkLine(const QByteArray &line)
{
    const ControlConnection::ParsedLine parsed = ControlConnection::parseLine(line);
    if (parsed.kind == ControlConnection::ParsedLine::Blank) {
        return;
    }
    // The id goes back to the client as this text: it must read as the value the request held.
    const QJsonDocument echoed = QJsonDocument::fromJson('[' + parsed.id + ']');
    if (!echoed.isArray() || echoed.array().size() != 1) {
        FuzzSupport::fail("the id echoed is not one JSON value:", QString::fromUtf8(parsed.id.left(200)));
    }
    if (parsed.kind == ControlConnection::ParsedLine::Request) {
        if (echoed.array().at(0) != parsed.request.value(QLatin1String("id"))) {
            FuzzSupport::fail("the id echoed differs from the request's:", QString::fromUtf8(parsed.id.left(200)));
        }
        const QJsonValue console = parsed.request.value(QLatin1String("line"));
        if (console.isString()) {
            checkWords(console.toString());
        }
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray stream = inflated(data, size);
    const QVector<Piece> expected = expectedPieces(stream);
    const QVector<Piece> read = splitInReads(stream, size > 0 ? data[0] : 0);
    if (read != expected) {
        FuzzSupport::fail("the reads gave other lines than the stream holds:",
            QStringLiteral("%1 pieces, %2 expected").arg(read.size()).arg(expected.size()));
    }
    for (const Piece &piece : read) {
        if (piece.result == LineSplitter::Line) {
            checkLine(piece.line);
        }
    }
    return 0;
}
