#include "app/AboutPane.h"

#include "controls/AppIcons.h"

#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

AboutPane::AboutPane(const QUrl& website, QWidget* parent)
    : QWidget(parent)
    , logoApp(new QLabel)
    , nameApp(new QLabel(QStringLiteral("Twinsift")))
    , versionApp(new QLabel(
          QStringLiteral("Version %1 (%2)").arg(QLatin1String(TWINSIFT_VERSION), QLatin1String(TWINSIFT_BUILD))))
    , CopyrightApp(new QLabel(QStringLiteral("Copyright \u00A9 2025 The Twinsift developers")))
    , websiteApp(new QLabel(QStringLiteral("<a href=\"%1\">%2</a>").arg(website.toString(), website.host()))) {
    logoApp->setPixmap(AppIcons::applicationIcon().pixmap(72, 72));
    QFont nameFont = nameApp->font();
    nameFont.setPointSizeF(nameFont.pointSizeF() * 1.5);
    nameFont.setBold(true);
    nameApp->setFont(nameFont);
    CopyrightApp->setForegroundRole(QPalette::PlaceholderText);
    websiteApp->setTextFormat(Qt::RichText);
    websiteApp->setOpenExternalLinks(false);
    websiteApp->setCursor(Qt::PointingHandCursor);
    connect(websiteApp, &QLabel::linkActivated, this, &AboutPane::websiteActivated);
    auto* supportButton = new QPushButton(tr("Support\u2026"));
    connect(supportButton, &QPushButton::clicked, this, &AboutPane::supportRequested);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(16, 18, 16, 14);
    layout->setSpacing(4);
    for (QLabel* label : { logoApp, nameApp, versionApp, CopyrightApp, websiteApp }) {
        label->setAlignment(Qt::AlignHCenter);
        layout->addWidget(label);
    }
    layout->insertSpacing(1, 4);
    layout->addSpacing(10);
    layout->addWidget(supportButton, 0, Qt::AlignHCenter);
    layout->addStretch(1);
}
