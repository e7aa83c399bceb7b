#ifndef VANTIXCONTROL_ENGINE_H
#define VANTIXCONTROL_ENGINE_H

#include <vantix/vantix_export.h>
#include <vantixcontrol/protocol/argument.h>

#include <QObject>
#include <QStringList>
#include <QVector>

#include <functional>

namespace TQ_SPAPI {
class System;
}

namespace VantixControl {

class EnginePrivate;
class Session;
struct Reply;

/**
 * The console engine of one System: the commands its sessions run, the
 * built-in ones and those its host adds. Every session of the System (the
 * control server's and the host's own) runs lines through it. It is made
 * on first use and goes with its System, and with it what the host added.
 */
class VANTIX_EXPORT Engine : public QObject
{
    Q_OBJECT

public:
    /// A command only its host offers (vantix-sim's quit); it joins help and describe.
    struct HostCommand
    {
        QString name;
        /// Checked before run is called, as for a built-in command.
        QVector<Argument> arguments;
        QString help;
        /// A few words for a button.
        QString label;
        /// It changes nothing, so recordings leave it out.
        bool readOnly = false;
        /// Gets the words after the command, already checked against arguments.
        std::function<Reply(Session &session, const QStringList &args)> run;
    };

    /// The engine of @p system, made on first use; null for null.
    static Engine *of(TQ_SPAPI::System *system);

    /// Adds @p command, or replaces the command of the same name.
    void addHostCommand(const HostCommand &command);

private:
    explicit Engine(TQ_SPAPI::System *system);
    ~Engine() override;

    EnginePrivate *d;
    friend class EnginePrivate;
    Q_DISABLE_COPY(Engine)
};

} // namespace VantixControl

#endif
