// The debug command path: from ParameterController::setValue("VantixDebug",
// text) to the device's change signal reaching a listener, against one
// QString signal reaching a slot.

#include "benchmarks.h"
#include "benchsupport.h"

#include <vantix/vantix.h>

#include <qbcom/parametercontroller.h>
#include <qbcom/qbparameter.h>

#include <QObject>

#include <benchmark/benchmark.h>

#include <memory>

using namespace TQ_SPAPI;

namespace VantixBench {

namespace {
class TextSignal : public QObject
{
    Q_OBJECT
Q_SIGNALS:
    void textChanged(const QString &text);
};

class TextSlot : public QObject
{
    Q_OBJECT
public:
    long received = 0;
public Q_SLOTS:
    void onTextChanged(const QString &text)
    {
        benchmark::DoNotOptimize(text.constData());
        ++received;
    }
};

void bareSignal(benchmark::State &state)
{
    TextSignal sender;
    TextSlot receiver;
    QObject::connect(&sender, &TextSignal::textChanged, &receiver, &TextSlot::onTextChanged);
    const QString text = QStringLiteral("setbatteryfuel,40");
    for (auto _ : state) {
        Q_EMIT sender.textChanged(text);
    }
    if (receiver.received != long(state.iterations())) {
        state.SkipWithError("slot missed signals");
    }
    state.SetItemsProcessed(state.iterations());
}

// The parameter library alone: setValue() to a slot that only counts. What a
// command costs beyond this is the debug controller's and the device's share.
void parameterOnly(benchmark::State &state)
{
    TQ_QBCom::ParameterController parameters;
    TextSlot receiver;
    auto *parameter = parameters.addParameter(
        new TQ_QBCom::QBParameter(QStringLiteral("VantixDebug"), QVariant(QString()), QVariant()));
    QObject::connect(parameter, &TQ_QBCom::QBParameter::valueChanged, &receiver, &TextSlot::onTextChanged);
    const QVariant value(QStringLiteral("setbatteryfuel,40"));
    for (auto _ : state) {
        parameters.setValue(debugParameterName(), value);
    }
    if (receiver.received != long(state.iterations())) {
        state.SkipWithError("slot missed values");
    }
    state.SetItemsProcessed(state.iterations());
}

enum class Listen { Fuel, NetworkState, WifiStrength, Nothing };

void command(benchmark::State &state, const char *text, Listen listen)
{
    System *system = benchSystem();
    TQ_QBCom::ParameterController &parameters = controller();
    long received = 0;
    QObject listener;
    const auto count = [&received] { ++received; };
    switch (listen) {
    case Listen::Fuel:
        QObject::connect(qobject_cast<IBattery *>(system->device(IDevice::ID_BATTERY_1ST).data()),
            &IBattery::fuelGaugeChanged, &listener, count);
        break;
    case Listen::NetworkState:
        QObject::connect(qobject_cast<INetwork *>(system->device(IDevice::ID_NETWORK_LAN).data()),
            &INetwork::networkStateChanged, &listener, count);
        break;
    case Listen::WifiStrength:
        QObject::connect(qobject_cast<IWifi *>(system->device(IDevice::ID_NETWORK_WIFI).data()),
            &IWifi::wifiSignalStrengthChanged, &listener, count);
        break;
    case Listen::Nothing:
        break;
    }

    const QVariant value(QString::fromLatin1(text));
    // Only the illegal command writes to the log; nothing else may be silenced.
    std::unique_ptr<QuietLog> quiet(listen == Listen::Nothing ? new QuietLog : nullptr);
    const long logged = QuietLog::swallowed();
    for (auto _ : state) {
        parameters.setValue(debugParameterName(), value);
    }
    quiet.reset();

    const long expected = long(state.iterations());
    if (listen == Listen::Nothing ? QuietLog::swallowed() - logged != expected : received != expected) {
        state.SkipWithError("the command did not reach its listener once per call");
    }
    state.SetItemsProcessed(state.iterations());
}
} // namespace

void registerCommandBenchmarks()
{
    using benchmark::RegisterBenchmark;
    RegisterBenchmark("Command/bare-signal", bareSignal);
    RegisterBenchmark("Command/parameter-only", parameterOnly);
    RegisterBenchmark("Command/fuel", command, "setbatteryfuel,40", Listen::Fuel);
    RegisterBenchmark("Command/network-state", command, "setwiredstate,12", Listen::NetworkState);
    RegisterBenchmark("Command/wifi-strength", command, "setwifisignalstrength,55", Listen::WifiStrength);
    RegisterBenchmark("Command/illegal", command, "nosuchcommand,1", Listen::Nothing);
}

} // namespace VantixBench

#include "bench_command.moc"
