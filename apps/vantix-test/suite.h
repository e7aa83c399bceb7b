#ifndef VANTIXTEST_SUITE_H
#define VANTIXTEST_SUITE_H

#include <QList>
#include <QMap>
#include <QString>
#include <QStringList>

/// One run of one scenario, its lines ready to send.
struct Scenario
{
    QString path; ///< as found from what the user named: "tests/hw/low-battery.vsim"
    QString name; ///< "low-battery.vsim", within its folder; "low-battery.vsim#2" for the second of --repeat runs
    QString group; ///< the folder it was found in, for reports that group tests
    QStringList lines; ///< with every ${NAME} replaced
    int run = 1;
};

/**
 * Turns the scenario files and folders of the command line into the runs of
 * this shard: folders are searched for *.vsim files, each folder's in the
 * order of their paths, and every file is read and its ${NAME}s replaced up
 * front, so that bad input stops the run before anything starts.
 */
namespace Suite {

struct Selection
{
    int shardIndex = 1;
    int shardCount = 1;
    int repeat = 1;
};

bool collect(const QStringList &paths, const QMap<QString, QString> &defines, const Selection &selection,
    QList<Scenario> *scenarios, QString *error);

/// @p lines with ${NAME} replaced; false with "<source>:<line>: ..." when a name is not defined.
bool substitute(const QStringList &lines, const QMap<QString, QString> &defines, const QString &source,
    QStringList *substituted, QString *error);

} // namespace Suite

#endif
