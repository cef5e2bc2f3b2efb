#pragma once

#include <QUrl>
#include <QWidget>

class QLabel;

// The About tab of the preferences window: the application's icon, name, version and build,
// copyright, a link to the website and a button for the support page. It only reports the two
// actions; the window opens the pages.
class AboutPane : public QWidget {
    Q_OBJECT

public:
    explicit AboutPane(const QUrl& website, QWidget* parent = nullptr);

    QLabel* logoApp;
    QLabel* nameApp;
    QLabel* versionApp;
    QLabel* CopyrightApp;
    QLabel* websiteApp;

signals:
    void websiteActivated();
    void supportRequested();
};
