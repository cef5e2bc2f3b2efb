#pragma once

#include "app/AppDelegate.h"
#include "app/MainToolbar.h"
#include "app/MainWindow.h"
#include "app/mainView.h"
#include "base/FileSystem.h"
#include "base/Log.h"
#include "support/ScriptedPrompter.h"
#include "support/TempTree.h"

#include <QMutex>
#include <QMutexLocker>
#include <QStringList>
#include <memory>

// Collects the log lines of the test (written from the scan thread too).
class LogCollector {
public:
    LogCollector() {
        Log::setSink([this](const QString& line) {
            QMutexLocker lock(&m_mutex);
            m_lines.append(line);
        });
    }
    ~LogCollector() { Log::setSink({}); }

    QStringList lines() const {
        QMutexLocker lock(&m_mutex);
        return m_lines;
    }
    int count(const QString& line) const { return static_cast<int>(lines().count(line)); }
    void clear() {
        QMutexLocker lock(&m_mutex);
        m_lines.clear();
    }

private:
    mutable QMutex m_mutex;
    QStringList m_lines;
};

// The real application in a fresh settings folder, with scripted answers to its questions.
struct AppFixture {
    TempEnvironment environment;
    ScriptedPrompter prompter;
    LogCollector log;
    std::unique_ptr<AppDelegate> app;

    AppFixture()
        : app(std::make_unique<AppDelegate>(prompter)) {
        app->applicationDidFinishLaunching();
    }
    ~AppFixture() { app.reset(); }

    mainView* setup() const { return app->mainViewObj(); }
    MainToolbar* toolbar() const { return app->toolbar(); }
    QString toolbarText() const { return toolbar()->plainText(); }
};

inline qint64 allocatedSize(const QByteArray& path) {
    FileSystem::ItemInfo info;
    FileSystem::stat(path, info);
    return info.allocated;
}

// Long enough for a scan under the sanitizers on a busy machine.
constexpr int kScanTimeoutMs = 60000;
