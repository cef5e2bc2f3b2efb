#pragma once

#include <QByteArray>
#include <functional>
#include <optional>

// Permission faults are invisible to root, which the tests run as. These helpers run part of a test
// in a child process as the user nobody (65534, no supplementary groups).
namespace Unprivileged {

constexpr unsigned kNobody = 65534;

// Whether this process may switch to another user (it runs as root).
bool available();

// Runs `body` in a forked child as nobody and returns what it returned; nothing when the child
// could not switch users or did not end normally.
std::optional<QByteArray> run(const std::function<QByteArray()>& body);

// Grants nobody reading of a file through an access control list entry (setfacl -m u:nobody:r);
// false when setfacl is missing or the file system keeps no ACLs.
bool grantReadByAcl(const QByteArray& path);

} // namespace Unprivileged
