// AppDelegate's photo-library scan: the choice between the remembered library and another one, the
// library panel that only lets the Pictures folder, its parents and "iPhoto Library" items be
// chosen, and the list scan over the chosen library.
#include "app/AppDelegate.h"

#include "base/Log.h"
#include "base/PathBytes.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>
#include <QTimer>
#include <unistd.h>

namespace {

const QString kIPhotoURL = QStringLiteral("iPhotoURL");
const QString kIPhotoLibrary = QStringLiteral("iPhoto Library");
const QString kNewPhotoLibrary = QStringLiteral("New Photo App Library");
// The other library's scan starts a moment after its panel has closed.
constexpr int kOtherLibraryDelayMs = 200;

bool readable(const QByteArray& path) {
    return !path.isEmpty() && ::access(path.constData(), R_OK) == 0;
}

} // namespace

QByteArray AppDelegate::picturesFolder() {
    const QString pictures = QStandardPaths::writableLocation(QStandardPaths::PicturesLocation);
    const QString resolved = QFileInfo(pictures).canonicalFilePath();
    return PathBytes::normalized(QFile::encodeName(resolved.isEmpty() ? QDir::cleanPath(pictures) : resolved), "/");
}

void AppDelegate::chageAlertText(Prompter::Alert& alert) {
    if (alert.popUpItems.value(alert.popUpIndex) == kNewPhotoLibrary) {
        alert.messageText = QStringLiteral("Select any New Photo Library");
        alert.informativeText = QStringLiteral("This option will scan all duplicates photos from selected Library.");
    } else {
        alert.messageText = QStringLiteral("Select iPhoto Library");
        alert.informativeText = QStringLiteral("This option will scan all duplicates photos from iPhoto Library.");
    }
}

void AppDelegate::ScanIphotoPictures() {
    if (m_state.isScanRunning) {
        Log::line(QStringLiteral("scan running"));
        return;
    }
    Prompter::Alert alert;
    alert.buttons = { QStringLiteral("Select"), QStringLiteral("Close") };
    alert.popUpItems = { kIPhotoLibrary, kNewPhotoLibrary };
    alert.popUpIndex = 0;
    alert.popUpChanged = &AppDelegate::chageAlertText;
    chageAlertText(alert);
    const Prompter::AlertAnswer answer = m_prompter.runAlert(alert);
    if (answer.response != Prompter::FirstButton)
        return;
    if (alert.popUpItems.value(answer.popUpIndex) == kNewPhotoLibrary) {
        openPanalForPhotoAndVideosForOtherLibrary();
        return;
    }
    if (makeBookMarkURLAccessible())
        performiPhotoScan();
    else
        openPanalForIphoto();
}

bool AppDelegate::makeBookMarkURLAccessible() {
    const QByteArray stored = m_settingsStore.bytes(kIPhotoURL);
    if (stored.isEmpty())
        return false;
    m_iPhotoFolderURL = stored;
    return readable(m_iPhotoFolderURL);
}

void AppDelegate::performiPhotoScan() {
    if (!readable(m_iPhotoFolderURL)) {
        Log::line(QStringLiteral("not availble"));
        return;
    }
    if (m_state.isScanRunning)
        return;
    // The library joins without emptying the list, so a second scan of it lists it twice; the
    // repeated paths fold into one entry of the table.
    m_state.PhotoDir.append(m_iPhotoFolderURL);
    m_state.photoScan = true;
    scanStart();
}

bool AppDelegate::panelShouldEnableURL(const QByteArray& path) const {
    const QByteArray candidate = PathBytes::normalized(path, "/");
    if (m_iPhotoFolderpath.contains(candidate))
        return true;
    const QByteArray name = PathBytes::lastPathComponent(candidate);
    const QByteArray extension = PathBytes::pathExtension(candidate);
    const QByteArray stem = extension.isEmpty() ? name : name.left(name.size() - extension.size() - 1);
    return stem == kIPhotoLibrary.toUtf8();
}

void AppDelegate::openPanalForIphoto() {
    const QByteArray pictures = picturesFolder();
    const QByteArray parent = PathBytes::deletingLastPathComponent(pictures);
    m_iPhotoFolderpath = { pictures, parent, PathBytes::deletingLastPathComponent(parent) };

    Prompter::OpenPanel panel;
    panel.title = QStringLiteral("Select Pictures Folder");
    panel.prompt = QStringLiteral("Choose");
    panel.canChooseFiles = true;
    panel.canChooseDirectories = true;
    panel.allowsMultipleSelection = false;
    panel.directory = pictures;
    panel.shouldEnable = [this](const QByteArray& path) { return panelShouldEnableURL(path); };
    const Prompter::PanelAnswer answer = m_prompter.runOpenPanel(panel);
    if (answer.response != Prompter::OK || answer.urls.isEmpty())
        return;
    m_iPhotoFolderURL = PathBytes::normalized(answer.urls.first(), "/");
    m_settingsStore.setBytes(kIPhotoURL, m_iPhotoFolderURL);
    m_settingsStore.synchronize();
    performiPhotoScan();
}

void AppDelegate::openPanalForPhotoAndVideosForOtherLibrary() {
    Prompter::OpenPanel panel;
    panel.title = QStringLiteral("Select Pictures Folder");
    panel.prompt = QStringLiteral("Choose");
    panel.canChooseFiles = true;
    panel.canChooseDirectories = true;
    panel.allowsMultipleSelection = false;
    panel.directory = picturesFolder();
    const Prompter::PanelAnswer answer = m_prompter.runOpenPanel(panel);
    if (answer.response != Prompter::OK)
        return;
    m_state.PhotoDir.clear();
    for (const QByteArray& url : answer.urls) {
        const QByteArray path = PathBytes::normalized(url, "/");
        if (!m_state.PhotoDir.contains(path))
            m_state.PhotoDir.append(path);
    }
    QTimer::singleShot(kOtherLibraryDelayMs, this, [this] {
        if (m_state.PhotoDir.isEmpty() || m_state.isScanRunning)
            return;
        m_state.photoScan = true;
        scanStart();
    });
}
