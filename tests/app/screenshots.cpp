// Makes the pictures of the README: each screen of the real window, drawn off screen.
// Usage: twinsift_screenshots OUTPUT_FOLDER [BIG_FOLDER]
#include "app/AppDelegate.h"
#include "app/FolderListModel.h"
#include "app/MainWindow.h"
#include "app/mainView.h"
#include "controls/AppIcons.h"
#include "removal/DeletingPanel.h"
#include "review/FileListModel.h"
#include "review/GroupListModel.h"
#include "review/Prompter.h"
#include "review/resultView.h"
#include "support/ScriptedPrompter.h"
#include "support/TempTree.h"

#include <QApplication>
#include <QBuffer>
#include <QDir>
#include <QElapsedTimer>
#include <QListView>
#include <QPainter>
#include <QPainterPath>
#include <QPushButton>
#include <QThread>
#include <cmath>
#include <cstdio>
#include <functional>

namespace {

bool waitUntil(const std::function<bool()>& done, int timeoutMs) {
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > timeoutMs)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
        QThread::msleep(5);
    }
    return true;
}

void pause(int ms) {
    waitUntil([] { return false; }, ms);
}

void shoot(AppDelegate& app, const QString& file) {
    pause(900); // past the fade-ins (the scan list pages take 0.7 s) and the resize
    app.window()->grab().save(file);
    std::printf("%s\n", qPrintable(file));
}

// The main window with a sheet over it, as a person sees them: the sheet hangs from the top of the
// window's content, centred, the window behind it a little dimmed.
void shootSheet(AppDelegate& app, QWidget& sheet, const QString& file, QWidget* under = nullptr) {
    pause(400);
    QImage picture = app.window()->grab().toImage();
    QPainter painter(&picture);
    painter.fillRect(picture.rect(), QColor(0, 0, 0, 40));
    const int top = app.window()->mapFromGlobal(app.containtView()->mapToGlobal(QPoint(0, 0))).y();
    for (QWidget* layer : { under, &sheet }) {
        if (!layer)
            continue;
        const QImage image = layer->grab().toImage();
        const QPoint at((picture.width() - image.width()) / 2, top + (layer == &sheet && under ? 30 : 0));
        painter.fillRect(QRect(at + QPoint(2, 3), image.size()), QColor(0, 0, 0, 50));
        painter.drawImage(at, image);
    }
    painter.end();
    picture.save(file);
    std::printf("%s\n", qPrintable(file));
}

// A landscape at dusk in one of a few colourings, for pictures worth previewing.
QByteArray photo(int variant) {
    QImage image(1200, 800, QImage::Format_RGB32);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    const int hue = (200 + variant * 29) % 360;
    QLinearGradient sky(0, 0, 0, 800);
    sky.setColorAt(0, QColor::fromHsv(hue, 150, 150));
    sky.setColorAt(0.6, QColor::fromHsv((hue + 160) % 360, 110, 235));
    sky.setColorAt(1, QColor::fromHsv((hue + 180) % 360, 70, 250));
    painter.fillRect(image.rect(), sky);
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor(255, 240, 190));
    painter.drawEllipse(QPointF(300 + variant * 60, 420), 80, 80);
    for (int layer = 0; layer < 3; ++layer) {
        QPainterPath path;
        const double base = 520 + layer * 90;
        path.moveTo(0, 800);
        for (int x = 0; x <= 1200; x += 20)
            path.lineTo(x, base - 55 * std::sin((x + layer * 250 + variant * 90) / (150.0 + layer * 50)));
        path.lineTo(1200, 800);
        painter.setBrush(QColor::fromHsv(hue, 90 + layer * 30, 110 - layer * 30));
        painter.drawPath(path);
    }
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "JPEG", 92);
    // Padded past the smallest size a scan reports.
    return bytes + QByteArray(qMax<qsizetype>(0, 150000 - bytes.size()), '\0');
}

void writeBytes(const QByteArray& path, const QByteArray& bytes) {
    QDir().mkpath(QFileInfo(QString::fromUtf8(path)).path());
    QFile file(QString::fromUtf8(path));
    file.open(QIODevice::WriteOnly);
    file.write(bytes);
}

void writeFile(const QByteArray& path, qint64 size, char fill) {
    QDir().mkpath(QFileInfo(QString::fromUtf8(path)).path());
    QFile file(QString::fromUtf8(path));
    file.open(QIODevice::WriteOnly);
    file.write(QByteArray(size, fill));
}

} // namespace

int main(int argc, char* argv[]) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication application(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s OUTPUT_FOLDER [BIG_FOLDER]\n", argv[0]);
        return 2;
    }
    const QString out = QString::fromLocal8Bit(argv[1]);
    const QByteArray big = argc > 2 ? QByteArray(argv[2]) : QByteArray("/usr/share");
    AppIcons::setUpTheme();
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedStates));

    TempEnvironment environment;
    const QByteArray demo = QFile::encodeName(QDir::tempPath()) + "/twinsift-demo";
    QDir(QString::fromUtf8(demo)).removeRecursively();
    for (int i = 0; i < 12; ++i)
        writeBytes(demo + "/Pictures/Holiday/IMG_" + QByteArray::number(4100 + i) + ".jpg", photo(i));
    for (int i = 0; i < 5; ++i) {
        writeBytes(demo + "/Pictures/Imported/IMG_" + QByteArray::number(4100 + i) + ".jpg", photo(i));
        if (i < 2)
            writeBytes(demo + "/Pictures/Imported/Copy of IMG_" + QByteArray::number(4100 + i) + ".jpg", photo(i));
    }
    writeFile(demo + "/Documents/Report 2023.pdf", 2400000, 'r');
    writeFile(demo + "/Documents/Old/Report 2023 copy.pdf", 2400000, 'r');
    writeFile(demo + "/Documents/Notes.txt", 180000, 'n');
    writeFile(demo + "/Music/Album/01 Opening.flac", 8300000, 'm');
    writeFile(demo + "/Music/Album/02 Theme.flac", 7100000, 't');

    ScriptedPrompter prompter;
    AppDelegate app(prompter);
    app.applicationDidFinishLaunching();
    mainView* setup = app.mainViewObj();
    setup->checkAndReloadTableView({ demo + "/Pictures", demo + "/Documents", demo + "/Music" });
    setup->model()->waitForSizes();
    shoot(app, out + QStringLiteral("/setup.png"));

    app.nextButtonAction_toolbar();
    waitUntil([&] { return app.typetoolbar() == 3 || app.typetoolbar() == 4; }, 60000);
    shoot(app, out + QStringLiteral("/groups-found.png"));

    // The result screen with the newest copies kept and a picture in the preview.
    app.nextButtonAction_toolbar();
    resultView* results = app.resultViewObj();
    results->AutoSelectAction(Selection::keepNewestTitle());
    for (qsizetype row = 0; row < results->groupModel()->rowCount(); ++row) {
        if (results->groupModel()->groupAt(row)->listAll().size() == 3) {
            results->duplicateListMain()->setCurrentIndex(results->groupModel()->index(static_cast<int>(row)));
            break;
        }
    }
    results->sameList()->setCurrentIndex(results->fileModel()->index(1));
    shoot(app, out + QStringLiteral("/results.png"));

    // The review sheet, with every copy of one group chosen so that it shows the one left alone,
    // then the completion panel over it.
    for (const DuplicateGroupPtr& group : app.state().duplicateMainArray) {
        if (group->listAll().size() != 3)
            continue;
        for (const DuplicateFilePtr& member : group->listAll()) {
            if (!app.selection().duplicateSelectedArray.contains(member))
                app.selection().duplicateSelectedArray.append(member);
        }
        break;
    }
    app.nextButtonAction_toolbar();
    DeletingPanel* review = app.deleteingWindow();
    shootSheet(app, *review, out + QStringLiteral("/review.png"));
    for (int i = 0; i < 7; ++i)
        app.SelectedFileFolderArray().append({ "/demo/" + QByteArray::number(i), 0, 960000 + i * 37000, {} });
    review->congoPanelOpen();
    shootSheet(app, *review->CongoPanelObj(), out + QStringLiteral("/completion.png"), review);
    review->closeCongoWindow();
    review->closewindow();
    app.backButtonAction_toolbar();

    // The scan list's main page, then its result page after a photo-library scan of the demo
    // pictures, newest kept.
    app.ShowScanList_Menubar();
    app.addDragFile({ demo + "/Documents", demo + "/Music", demo + "/Documents/Notes.txt" });
    shoot(app, out + QStringLiteral("/scan-list.png"));
    prompter.expectAlert(Prompter::FirstButton, false, 1);
    prompter.expectPanel(Prompter::OK, { demo + "/Pictures" });
    app.ScanIphotoPictures();
    waitUntil([&] { return app.state().isScanRunning.load(); }, 2000);
    waitUntil([&] { return !app.state().isScanRunning; }, 60000);
    pause(1200); // past the list's first filtering
    app.keepNewestAction();
    shoot(app, out + QStringLiteral("/scan-list-result.png"));
    app.NewScanBack();

    setup->checkAndReloadTableView({ big });
    app.nextButtonAction_toolbar();
    pause(1200);
    shoot(app, out + QStringLiteral("/scanning.png"));
    waitUntil([&] { return !app.state().isScanRunning; }, 600000);

    // What a removal did, on three copies of its own below the demo folder: the group chosen whole
    // keeps its last copy, which the sheet lists as left alone beside the copies moved to the trash.
    const QByteArray copies = demo + "/Copies";
    for (const char* name : { "/Scans/Receipt 2024.pdf", "/Backup/Receipt 2024.pdf", "/Mail/Receipt 2024.pdf" })
        writeFile(copies + name, 210000, 'p');
    app.nextButtonAction_toolbar(); // from "groups found" to the result of the last scan
    app.backButtonAction_toolbar(); // and back to an empty setup screen
    setup->checkAndReloadTableView({ copies });
    app.nextButtonAction_toolbar();
    waitUntil([&] { return app.typetoolbar() == 3 || app.typetoolbar() == 4; }, 60000);
    app.nextButtonAction_toolbar();
    if (app.state().duplicateMainArray.size() != 1)
        return 1;
    const DuplicateGroupPtr group = app.state().duplicateMainArray.first();
    for (const DuplicateFilePtr& member : group->listAll()) {
        if (!member->urlFile().startsWith(QByteArray(copies + '/')))
            return 1; // never anything outside the demo folder
    }
    app.selection().duplicateSelectedArray = group->listAll();
    results->reloadRow();
    app.nextButtonAction_toolbar();
    prompter.expectAlert(Prompter::FirstButton, false, 0);
    review->tDelete()->click();
    waitUntil([&] { return review->isShowingOutcome() && !review->isUpdating(); }, 60000);
    shootSheet(app, *review, out + QStringLiteral("/outcome.png"));
    review->doneButton()->click();
    QDir(QString::fromUtf8(demo)).removeRecursively();
    return 0;
}
