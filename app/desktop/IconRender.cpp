// Build-time tool: renders an SVG icon to square PNGs of the given sizes.
// Usage: twinsift_iconrender input.svg output-pattern size...
// The pattern's "%1" is replaced by the size, e.g. "icons/%1x%1/apps/twinsift.png".
#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QImage>
#include <QImageReader>
#include <QTextStream>

int main(int argc, char* argv[]) {
    QCoreApplication app(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    QTextStream err(stderr);
    if (arguments.size() < 4) {
        err << "usage: twinsift_iconrender input.svg output-pattern size...\n";
        return 2;
    }
    for (qsizetype i = 3; i < arguments.size(); ++i) {
        bool ok = false;
        const int size = arguments.at(i).toInt(&ok);
        if (!ok || size <= 0) {
            err << "bad size: " << arguments.at(i) << '\n';
            return 2;
        }
        QImageReader reader(arguments.at(1), "svg");
        reader.setScaledSize(QSize(size, size));
        const QImage image = reader.read();
        if (image.isNull()) {
            err << arguments.at(1) << ": " << reader.errorString() << '\n';
            return 1;
        }
        const QString output = arguments.at(2).arg(size);
        QDir().mkpath(QFileInfo(output).absolutePath());
        if (!image.convertToFormat(QImage::Format_ARGB32).save(output, "PNG")) {
            err << "cannot write " << output << '\n';
            return 1;
        }
    }
    return 0;
}
