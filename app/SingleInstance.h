#pragma once

#include <QObject>

class QLocalServer;

// One running window per user and display: a second start hands over to the first (which brings
// its window to the front) and ends. The running instance listens on a local socket named after
// the user and the display.
class SingleInstance : public QObject {
    Q_OBJECT

public:
    explicit SingleInstance(const QString& name = defaultName(), QObject* parent = nullptr);
    ~SingleInstance() override;

    static QString defaultName();

    // True when another instance answered and was asked to come to the front; this one should end.
    bool handOverToRunning();
    // Starts listening for later starts; false when the socket could not be made.
    bool listen();

signals:
    void reopenRequested();

private:
    QString m_name;
    QLocalServer* m_server = nullptr;
};
