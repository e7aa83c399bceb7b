#ifndef VANTIX_TEST_TESTROOT_H
#define VANTIX_TEST_TESTROOT_H

#include <QString>
#include <QTemporaryDir>

/**
 * A fresh AppConfig root for one test: the unit's files go to a temporary
 * folder, and the arguments are reset to none. Restores the defaults when gone.
 */
class TestRoot
{
public:
    TestRoot();
    ~TestRoot();

    QString path() const { return m_dir.path(); }

private:
    QTemporaryDir m_dir;
};

#endif
