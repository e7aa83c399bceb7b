// vantix-panel: a window that shows and drives the simulated hardware of a
// running application that uses Vantix, over its control socket.

#include "appselector.h"
#include "panelwindow.h"
#include "screenshot.h"

#include <vantix/vantix_version.h>

#include <QApplication>
#include <QCommandLineParser>

#include <cstdio>
#include <cstring>

namespace {
// --help and --version answer without a display (for help2man and for a terminal without X).
bool onlyAsksForText(int argc, char *argv[])
{
    for (int i = 1; i < argc; ++i) {
        for (const char *option : {"-h", "--help", "--help-all", "-v", "--version"}) {
            if (std::strcmp(argv[i], option) == 0) {
                return true;
            }
        }
    }
    return false;
}
} // namespace

int main(int argc, char *argv[])
{
    if (onlyAsksForText(argc, argv)) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("vantix-panel"));
    QApplication::setApplicationVersion(QStringLiteral(VANTIX_VERSION_STRING));

    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("A window that shows and drives the simulated hardware of a running application that uses "
                       "Vantix: every device live, every change one click away.\n\n"
                       "With one application running it attaches to it; with several, choose one in the window or "
                       "with a selector. The window can also start vantix-sim for a platform and attach to it."));
    parser.addHelpOption();
    parser.addVersionOption();
    const QCommandLineOption tabOption(QStringLiteral("tab"),
        QStringLiteral("Open on this page: %1.").arg(PanelWindow::pageNames().join(QLatin1String(", "))),
        QStringLiteral("page"));
    const QCommandLineOption screenshotOption(QStringLiteral("screenshot"),
        QStringLiteral("Save a PNG picture of the window once it is attached, and quit (3 when it cannot)."),
        QStringLiteral("file"));
    const QCommandLineOption followOption(QStringLiteral("follow"),
        QStringLiteral("Once the application has gone, attach to any application that starts. Without it, only "
                       "a new instance of the same application is attached by itself; others are offered."));
    const QCommandLineOption sizeOption(QStringLiteral("size"),
        QStringLiteral("The window's size, such as 800x600 (default 1100x700)."), QStringLiteral("WxH"));
    parser.addOptions(AppSelector::options());
    parser.addOptions({tabOption, followOption, sizeOption, screenshotOption});
    parser.process(app);

    AppSelector selector;
    QString error;
    if (!AppSelector::fromParser(parser, &selector, &error)) {
        std::fprintf(stderr, "vantix-panel: %s\n", qPrintable(error));
        return 2;
    }

    PanelWindow window;
    if (parser.isSet(tabOption) && !window.setCurrentPage(parser.value(tabOption))) {
        std::fprintf(stderr, "vantix-panel: --tab takes one of %s\n",
            qPrintable(PanelWindow::pageNames().join(QLatin1String(", "))));
        return 2;
    }
    if (parser.isSet(followOption)) {
        window.setFollow(PanelWindow::Follow::Any);
    }
    QSize size(1100, 700);
    if (parser.isSet(sizeOption)) {
        const QStringList wh = parser.value(sizeOption).split(QLatin1Char('x'));
        const QSize asked = wh.size() == 2 ? QSize(wh.at(0).toInt(), wh.at(1).toInt()) : QSize();
        if (asked.width() <= 0 || asked.height() <= 0) {
            std::fprintf(stderr, "vantix-panel: --size takes a width and a height, such as 800x600\n");
            return 2;
        }
        size = asked;
    }
    window.resize(size);
    QScopedPointer<Screenshot> screenshot;
    if (parser.isSet(screenshotOption)) {
        screenshot.reset(new Screenshot(&window, parser.value(screenshotOption)));
    }
    window.show();
    window.start(selector);
    return QApplication::exec();
}
