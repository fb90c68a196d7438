#include "app_delegate.h"
#include "tool_panels.h"

#include <QApplication>
#include <QIcon>

int main(int argc, char* argv[]) {
    QApplication application(argc, argv);
    QApplication::setOrganizationName(QStringLiteral("Lumbra"));
    QApplication::setApplicationName(QStringLiteral("lumbra"));
    QApplication::setApplicationDisplayName(QStringLiteral("Lumbra"));
    QApplication::setApplicationVersion(QStringLiteral(LUMBRA_VERSION));
    QApplication::setDesktopFileName(QStringLiteral("lumbra"));

    lumbra::shell::registerToolPanels();
    lumbra::shell::AppDelegate delegate;
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/images/lumbra.svg")));
    delegate.start();
    return QApplication::exec();
}
