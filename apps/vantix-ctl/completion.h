#ifndef VANTIXCTL_COMPLETION_H
#define VANTIXCTL_COMPLETION_H

#include <QJsonObject>
#include <QStringList>

/**
 * What may come next on a console line, read from an application's schema:
 * commands, then each argument by the type the schema gives it (targets,
 * devices, properties, methods, choices, enum names, keys). @p words are
 * the line's words; the last one is the word being typed.
 */
namespace Completion {
QStringList candidates(const QJsonObject &schema, const QStringList &words);
}

#endif
