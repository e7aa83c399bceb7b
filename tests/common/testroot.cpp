#include "testroot.h"

#include <qbcommon/appconfig.h>

#include <QStringList>

TestRoot::TestRoot()
{
    AppConfig::instance()->setRootPath(m_dir.path());
    AppConfig::instance()->setArguments(QStringList{QStringLiteral("test")});
}

TestRoot::~TestRoot()
{
    AppConfig::instance()->setRootPath(QString());
    AppConfig::instance()->resetArguments();
}
