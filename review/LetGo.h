#pragma once

#include <QThreadPool>
#include <utility>

// Lets go of a large value on another thread: releasing a million references, and freeing what
// only they held, is work the window's thread would feel. Whatever else still refers to the
// records keeps them; the value itself is never read again.
template <typename T> void letGoElsewhere(T value) {
    QThreadPool::globalInstance()->start([value = std::move(value)]() mutable { value = T(); });
}
