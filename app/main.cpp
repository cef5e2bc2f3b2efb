#include "app/GuiMain.h"
#include "cli/CommandLine.h"

#include <QCoreApplication>

int main(int argc, char* argv[]) {
    if (argc <= 1)
        return runGui(argc, argv);

    // Commands take their arguments as raw bytes: file names need not be valid UTF-8.
    QCoreApplication app(argc, argv);
    QList<QByteArray> arguments;
    for (int i = 1; i < argc; ++i)
        arguments.append(QByteArray(argv[i]));
    return CommandLine::run(arguments);
}
