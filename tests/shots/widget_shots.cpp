// Renders the preferences window (both tabs) and the preview window to PNG files for the README.
// Usage: widget_shots OUTPUT_DIR   (settings go to a temporary folder; nothing of the user's is read)
#include "app/PreferenceWindow.h"
#include "base/ScanSettings.h"
#include "base/SettingsStore.h"
#include "controls/AppIcons.h"
#include "review/PreviewView.h"
#include "review/PreviewWindow.h"
#include "support/ScriptedPrompter.h"
#include "support/TempTree.h"

#include <QApplication>
#include <QBuffer>
#include <QDir>
#include <QLinearGradient>
#include <QPainter>
#include <QPainterPath>
#include <QTabWidget>
#include <QTest>

namespace {

QImage landscape() {
    QImage image(1600, 1000, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    QLinearGradient sky(0, 0, 0, 1000);
    sky.setColorAt(0, QColor(38, 70, 140));
    sky.setColorAt(0.55, QColor(238, 150, 110));
    sky.setColorAt(1, QColor(250, 210, 150));
    painter.fillRect(image.rect(), sky);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(255, 236, 180));
    painter.drawEllipse(QPointF(1100, 560), 110, 110);
    const QList<QColor> hills { QColor(70, 60, 110), QColor(50, 45, 85), QColor(32, 30, 60) };
    for (int layer = 0; layer < hills.size(); ++layer) {
        QPainterPath path;
        const double base = 640 + layer * 110;
        path.moveTo(0, 1000);
        for (int x = 0; x <= 1600; x += 20)
            path.lineTo(x, base - 70 * std::sin((x + layer * 300) / (180.0 + layer * 60)) - 30 * std::sin(x / 53.0));
        path.lineTo(1600, 1000);
        painter.setBrush(hills.at(layer));
        painter.drawPath(path);
    }
    return image;
}

bool save(QWidget& widget, const QString& file) {
    widget.show();
    if (!QTest::qWaitForWindowExposed(&widget))
        return false;
    QTest::qWait(300);
    return widget.grab().save(file);
}

} // namespace

int main(int argc, char* argv[]) {
    QApplication app(argc, argv);
    if (argc != 2) {
        qWarning("usage: widget_shots OUTPUT_DIR");
        return 2;
    }
    const QString out = QDir(QString::fromLocal8Bit(argv[1])).absolutePath();
    QDir().mkpath(out);
    AppIcons::setUpTheme();
    QApplication::setWindowIcon(AppIcons::applicationIcon());

    TempEnvironment environment;
    SettingsStore store;
    store.setValue(QStringLiteral("ignoreFolderList"),
        QStringList { QDir::homePath() + QStringLiteral("/.local"), QDir::homePath() + QStringLiteral("/.cache"),
            QDir::homePath() + QStringLiteral("/Projects/build"), QStringLiteral("/var/backups") });
    ScanSettings settings;
    getAppSetting(settings, store);
    ScriptedPrompter prompter;
    PreferenceWindow preferences(settings, store, prompter);
    bool ok = save(preferences, out + QStringLiteral("/preferences-general.png"));
    preferences.tabView->setCurrentIndex(1);
    ok = save(preferences, out + QStringLiteral("/preferences-about.png")) && ok;
    preferences.close();

    TempTree tree;
    QByteArray png;
    {
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        landscape().save(&buffer, "JPEG", 90);
    }
    PreviewWindow preview;
    preview.resize(720, 520);
    preview.toggle(tree.file("Evening hills.jpg", png));
    ok = save(preview, out + QStringLiteral("/preview-image.png")) && ok;
    return ok ? 0 : 1;
}
