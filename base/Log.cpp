#include "base/Log.h"

#include <QMutex>
#include <cstdio>
#include <syslog.h>

namespace {

QMutex& sinkMutex() {
    static QMutex mutex;
    return mutex;
}

std::function<void(const QString&)>& sinkFunction() {
    static std::function<void(const QString&)> sink;
    return sink;
}

bool& stderrFlag() {
    // Standard error stays for what the user asked for; a developer or a bug report asks for the
    // log there with TWINSIFT_VERBOSE=1.
    static bool enabled = qEnvironmentVariableIntValue("TWINSIFT_VERBOSE") != 0;
    return enabled;
}

} // namespace

void Log::line(const QString& text) {
    // A message must stay one line in the system log.
    QString flat = text;
    flat.replace(QLatin1Char('\n'), QLatin1Char(' '));
    QMutexLocker lock(&sinkMutex());
    if (sinkFunction()) {
        sinkFunction()(flat);
        return;
    }
    writeSystemLog(flat);
    const QByteArray bytes = flat.toUtf8();
    if (stderrFlag()) {
        std::fprintf(stderr, "%s\n", bytes.constData());
        std::fflush(stderr);
    }
}

void Log::writeSystemLog(const QString& text) {
    static const bool opened = (openlog("twinsift", LOG_PID, LOG_USER), true);
    Q_UNUSED(opened);
    syslog(LOG_INFO, "%s", text.toUtf8().constData());
}

void Log::setSink(std::function<void(const QString&)> sink) {
    QMutexLocker lock(&sinkMutex());
    sinkFunction() = std::move(sink);
}

void Log::setStderrEnabled(bool enabled) {
    QMutexLocker lock(&sinkMutex());
    stderrFlag() = enabled;
}

bool Log::stderrEnabled() {
    QMutexLocker lock(&sinkMutex());
    return stderrFlag();
}
