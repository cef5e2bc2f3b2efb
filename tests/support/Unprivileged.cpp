#include "support/Unprivileged.h"

#include <QFile>
#include <QProcess>
#include <QStringList>
#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Unprivileged {

bool available() {
    return ::geteuid() == 0;
}

std::optional<QByteArray> run(const std::function<QByteArray()>& body) {
    int fds[2];
    if (::pipe(fds) != 0)
        return std::nullopt;
    const pid_t child = ::fork();
    if (child < 0) {
        ::close(fds[0]);
        ::close(fds[1]);
        return std::nullopt;
    }
    if (child == 0) {
        ::close(fds[0]);
        if (::setgroups(0, nullptr) != 0 || ::setresgid(kNobody, kNobody, kNobody) != 0
            || ::setresuid(kNobody, kNobody, kNobody) != 0)
            ::_exit(2);
        const QByteArray out = body();
        qsizetype written = 0;
        while (written < out.size()) {
            const ssize_t n = ::write(fds[1], out.constData() + written, static_cast<size_t>(out.size() - written));
            if (n <= 0)
                ::_exit(3);
            written += n;
        }
        ::_exit(0);
    }
    ::close(fds[1]);
    QByteArray out;
    char buffer[4096];
    ssize_t n;
    while ((n = ::read(fds[0], buffer, sizeof buffer)) > 0)
        out.append(buffer, n);
    ::close(fds[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return std::nullopt;
    return out;
}

bool grantReadByAcl(const QByteArray& path) {
    QProcess setfacl;
    setfacl.start(
        QStringLiteral("setfacl"), { QStringLiteral("-m"), QStringLiteral("u:nobody:r"), QFile::decodeName(path) });
    return setfacl.waitForFinished() && setfacl.exitStatus() == QProcess::NormalExit && setfacl.exitCode() == 0;
}

} // namespace Unprivileged
