#include "removal/congoPanel.h"

#include "base/Log.h"
#include "controls/AppIcons.h"
#include "removal/RemovalTexts.h"

#include <QDesktopServices>
#include <QHBoxLayout>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

const QString kStyle
    = QStringLiteral("#congoPanel { background: #ffffff; }"
                     "QPushButton { color: #1d2126; border: 1px solid #b4bac2; border-radius: 5px; padding: 0 14px;"
                     " background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 #ffffff, stop:1 #eceef1); }"
                     "QPushButton:pressed { background: #dfe3e8; }"
                     "QPushButton:default { color: white; border-color: #2a6fb5;"
                     " background: qlineargradient(x1:0, y1:0, x2:0, y2:1, stop:0 #4a9be6, stop:1 #2f80d0); }"
                     "QPushButton#ShareResult { padding-right: 26px; }"
                     "QPushButton::menu-indicator { subcontrol-position: right center; subcontrol-origin: padding;"
                     " right: 9px; }"
                     // The focus mark: a thicker ring, the padding one point thinner so nothing moves.
                     "QPushButton:focus { border: 2px solid #2f80d0; padding: 0 13px; outline: none; }"
                     "QPushButton:default:focus { border-color: #0e3763; }"
                     "QPushButton#ShareResult:focus { padding-right: 25px; }");

qint64 sumOfFileSizes(const QList<FileDictionary>& files) {
    qint64 sum = 0;
    for (const FileDictionary& file : files)
        sum += file.FileSize;
    return sum;
}

} // namespace

congoPanel::congoPanel(const QList<FileDictionary>& SelectedFileFolderArray, QWidget* parent)
    : QDialog(parent)
    , openUrl([](const QUrl& url) { return QDesktopServices::openUrl(url); })
    , m_SelectedFileFolderArray(SelectedFileFolderArray)
    , m_SpaceFree(new QLabel)
    , m_OkBTN(new QPushButton(QStringLiteral("OK")))
    , m_rescanBTN(new QPushButton(QStringLiteral("Rescan")))
    , m_ShareResult(new QPushButton(QStringLiteral("Share")))
    , m_shareMenu(new QMenu(m_ShareResult)) {
    setObjectName(QStringLiteral("congoPanel"));
    setWindowTitle(QStringLiteral("Done"));
    setWindowModality(Qt::WindowModal);
    setStyleSheet(kStyle);
    setFixedSize(520, 240);

    auto* icon = new QLabel;
    icon->setPixmap(AppIcons::applicationIcon().pixmap(64, 64));
    icon->setAlignment(Qt::AlignCenter);
    auto* title = new QLabel(QStringLiteral("All done"));
    QFont titleFont = title->font();
    titleFont.setBold(true);
    titleFont.setPixelSize(17);
    title->setFont(titleFont);
    title->setAlignment(Qt::AlignCenter);
    m_SpaceFree->setObjectName(QStringLiteral("SpaceFree"));
    m_SpaceFree->setWordWrap(true);
    m_SpaceFree->setAlignment(Qt::AlignCenter);
    m_SpaceFree->setStyleSheet(QStringLiteral("color: #3a4047;"));

    for (QPushButton* button : { m_OkBTN, m_rescanBTN, m_ShareResult }) {
        button->setFixedHeight(26);
        button->setMinimumWidth(90);
        button->setAutoDefault(false);
    }
    m_OkBTN->setDefault(true);
    m_OkBTN->setObjectName(QStringLiteral("OkBTN"));
    m_rescanBTN->setObjectName(QStringLiteral("rescanBTN"));
    m_ShareResult->setObjectName(QStringLiteral("ShareResult"));
    // The share menu opens as soon as the button goes down.
    for (const QString& service : RemovalTexts::shareServices(proposedServices())) {
        QAction* item = m_shareMenu->addAction(service);
        connect(item, &QAction::triggered, this, [this, service] { share(service); });
    }
    m_ShareResult->setMenu(m_shareMenu);
    connect(m_OkBTN, &QPushButton::clicked, this, &congoPanel::CloseWindowOK);
    connect(m_rescanBTN, &QPushButton::clicked, this, &congoPanel::rescanLocal);

    auto* buttons = new QHBoxLayout;
    buttons->setSpacing(10);
    buttons->addWidget(m_ShareResult);
    buttons->addStretch(1);
    buttons->addWidget(m_rescanBTN);
    buttons->addWidget(m_OkBTN);
    auto* column = new QVBoxLayout(this);
    column->setContentsMargins(24, 20, 20, 16);
    column->setSpacing(8);
    column->addWidget(icon);
    column->addWidget(title);
    column->addWidget(m_SpaceFree, 1);
    column->addLayout(buttons);
    windowDidLoad();
}

QStringList congoPanel::proposedServices() {
    return { QStringLiteral("Facebook"), QStringLiteral("Twitter") };
}

void congoPanel::windowDidLoad() {
    m_SpaceFree->setText(
        RemovalTexts::congoSummary(m_SelectedFileFolderArray.size(), sumOfFileSizes(m_SelectedFileFolderArray)));
}

void congoPanel::CloseWindowOK() {
    emit okPressed();
}

void congoPanel::rescanLocal() {
    emit rescanPressed();
}

void congoPanel::share(const QString& service) {
    const QString link = RemovalTexts::shareLink();
    const QUrl url
        = RemovalTexts::shareUrl(service, RemovalTexts::shareText(m_SelectedFileFolderArray.size(), link), link);
    if (url.isEmpty() || !openUrl(url))
        Log::line(QStringLiteral("could not open %1").arg(url.toString()));
}
