#ifndef VANTIXCONTROL_ARGUMENT_H
#define VANTIXCONTROL_ARGUMENT_H

#include <vantix/vantix_export.h>

#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace VantixControl {

/**
 * One argument of a console command, declared once in the command's row:
 * the engine checks a line's words against it before the command runs and
 * builds the usage text from it; the schema sends it to front ends, which
 * offer what its type names. Its JSON form is the schema's
 * {name, type, optional, repeated, choices?, value?}.
 */
struct VANTIX_EXPORT Argument
{
    enum Type {
        Target, ///< "target": a device, "system" or another object
        Device, ///< "device": a device id name, number or alias, present or not
        Property, ///< "property": a property of the target before it
        Writable, ///< "writable": a writable property of the target before it
        Method, ///< "method": a method of the target before it
        Signal, ///< "signal": a signal of the target before it
        Value, ///< "value": a value of the property or method before it
        Number, ///< "number": a finite number such as 2.5
        Integer, ///< "integer": a whole number
        Milliseconds, ///< "ms": a whole number of milliseconds
        Key, ///< "key": a shortcut of the debug controller (keypad+1, shift+F4)
        File, ///< "file": a file name, taken from the client's folder
        Command, ///< "command": a console or debug command
        Text, ///< "text": any word
        DeviceType, ///< "DeviceType": device type flags (DEVICE_CAN|DEVICE_BUS)
        Choice, ///< "choice": one of choices
        Keyword, ///< "keyword": one of choices, written as it is (stop, within, --force, an operator)
    };

    QString name;
    Type type = Text;
    bool optional = false;
    /// Takes every word that is left (and none); only the last argument repeats.
    bool repeated = false;
    /// The words a Choice or Keyword accepts.
    QStringList choices;
    /// A keyword followed by a value of its own ("within <ms>"): the value's name and type.
    QString valueName;
    Type valueType = Text;

    /// The schema's name of @p type: "target", "ms", "DeviceType", ...
    static QString typeName(Type type);
    /// False for a name no type has.
    static bool typeFromName(const QString &name, Type *type);

    /// As a usage line shows it: "<target>", "[file]", "on|off", "[within <ms>]".
    QString usage() const;
    QJsonObject toJson() const;
    /// False when the object is no argument (no name, or a type no version of the schema has).
    static bool fromJson(const QJsonObject &object, Argument *argument);
};

} // namespace VantixControl

#endif
