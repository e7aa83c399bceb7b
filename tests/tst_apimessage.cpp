#include "apimessageprivate_p.h"

#include <vantix/iapimessage.h>
#include <vantix/system.h>

#include <QMetaEnum>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>

using namespace TQ_SPAPI;

namespace {
// A platform implementation that brings its own private object.
struct OwnMessage : IApiMessage
{
    explicit OwnMessage(ApiMessagePrivate &p)
        : IApiMessage(p)
    {
    }
};
} // namespace

class TestApiMessage : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void oneSilentInstancePerSystem()
    {
        IApiMessage *message = System::instance()->apiMessage();
        QVERIFY(message);
        QCOMPARE(System::instance()->apiMessage(), message);
        QCOMPARE(message->findChild<ApiMessagePrivate *>()->q, message);

        QSignalSpy errors(message, &IApiMessage::deviceError);
        QSignalSpy events(message, &IApiMessage::telemetryEvent);
        QSignalSpy messages(message, &IApiMessage::telemetryMessage);
        QVERIFY(QMetaObject::invokeMethod(message, "checkSystemLog"));
        QCoreApplication::processEvents();
        QCOMPARE(errors.count() + events.count() + messages.count(), 0);

        QPointer<IApiMessage> guard(message);
        System::releaseInstance();
        QVERIFY(guard.isNull());
    }

    void metaObject()
    {
        const QMetaObject &mo = IApiMessage::staticMetaObject;
        QStringList members;
        for (int i = mo.methodOffset(); i < mo.methodCount(); ++i) {
            members << mo.method(i).methodSignature();
        }
        QCOMPARE(members,
            (QStringList{"deviceError(uint)", "telemetryEvent(QString,QVariantMap,QVariantMap)",
                "telemetryMessage(uint,QVariantMap,QString)", "checkSystemLog()"}));
        const QMetaEnum levels = mo.enumerator(mo.indexOfEnumerator("SeverityLevel"));
        QCOMPARE(levels.keyCount(), 5);
        const char *names[] = {"Verbose", "Information", "Warning", "Critical", "Fatal"};
        for (int value = 0; value < 5; ++value) {
            QCOMPARE(levels.keyToValue(names[value]), value);
        }
    }

    void adoptsPrivate()
    {
        QPointer<ApiMessagePrivate> p = new ApiMessagePrivate;
        {
            OwnMessage message(*p);
            QCOMPARE(p->q, &message);
            QCOMPARE(p->parent(), &message);
            QVERIFY(!message.parent());
        }
        QVERIFY(p.isNull());
    }
};

QTEST_GUILESS_MAIN(TestApiMessage)
#include "tst_apimessage.moc"
