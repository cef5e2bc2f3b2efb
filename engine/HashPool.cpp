#include "engine/HashPool.h"

#include "base/DigestCache.h"
#include "base/FileSystem.h"
#include "base/Log.h"
#include "base/PathBytes.h"
#include "detect/FileHash.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <algorithm>
#include <cerrno>
#include <cstring>
#include <ctime>
#include <fcntl.h>
#include <linux/fiemap.h>
#include <linux/fs.h>
#include <optional>
#include <set>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>
#include <xxhash.h>

namespace {

qint64 nanoseconds(const struct timespec& time) {
    return static_cast<qint64>(time.tv_sec) * 1'000'000'000 + time.tv_nsec;
}

// The device number is put together from its parts as the walk's statx gives them, so that both
// keys of one file are equal.
DigestCache::Key keyOf(const struct stat& st) {
    return { static_cast<quint64>(makedev(major(st.st_dev), minor(st.st_dev))), static_cast<quint64>(st.st_ino),
        static_cast<qint64>(st.st_size), nanoseconds(st.st_mtim), nanoseconds(st.st_ctim) };
}

// Reads exactly `length` bytes at `offset` unless the file ends first; false on a read error.
bool readAt(int fd, char* buffer, qint64 length, qint64 offset, qint64& got) {
    got = 0;
    while (got < length) {
        const ssize_t n
            = ::pread(fd, buffer + got, static_cast<size_t>(length - got), static_cast<off_t>(offset + got));
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return false;
        }
        if (n == 0)
            break;
        got += n;
    }
    return true;
}

std::optional<quint64> blockAt(int fd, qint64 offset, qint64& bytesRead) {
    char buffer[HashPool::kBlock];
    qint64 got = 0;
    const bool ok = readAt(fd, buffer, HashPool::kBlock, offset, got);
    bytesRead += got;
    if (!ok)
        return std::nullopt;
    return HashPool::blockDigest(buffer, got);
}

// The first physical byte of the file's data, from the file system's extent map; the inode number
// where there is none (tmpfs, inline data, network file systems).
quint64 locationOf(int fd, const struct stat& st) {
    // The request is followed by room for one extent.
    alignas(struct fiemap) char request[sizeof(struct fiemap) + sizeof(struct fiemap_extent)] {};
    struct fiemap map { };
    map.fm_start = 0;
    map.fm_length = FIEMAP_MAX_OFFSET;
    map.fm_extent_count = 1;
    std::memcpy(request, &map, sizeof map);
    if (::ioctl(fd, FS_IOC_FIEMAP, request) != 0)
        return static_cast<quint64>(st.st_ino);
    std::memcpy(&map, request, sizeof map);
    struct fiemap_extent extent;
    std::memcpy(&extent, request + sizeof map, sizeof extent);
    if (map.fm_mapped_extents > 0 && !(extent.fe_flags & (FIEMAP_EXTENT_UNKNOWN | FIEMAP_EXTENT_DATA_INLINE)))
        return extent.fe_physical;
    return static_cast<quint64>(st.st_ino);
}

bool unchangedSince(int fd, const struct stat& before) {
    struct stat after;
    return ::fstat(fd, &after) == 0 && after.st_size == before.st_size
        && nanoseconds(after.st_mtim) == nanoseconds(before.st_mtim)
        && nanoseconds(after.st_ctim) == nanoseconds(before.st_ctim);
}

qint64 nowNs() {
    struct timespec now;
    ::clock_gettime(CLOCK_REALTIME, &now);
    return nanoseconds(now);
}

Fingerprint::Digest fastDigestOf(XXH128_hash_t hash) {
    XXH128_canonical_t canonical;
    XXH128_canonicalFromHash(&canonical, hash);
    static_assert(sizeof canonical.digest == 16);
    Fingerprint::Digest out;
    std::memcpy(out.data(), canonical.digest, out.size());
    return out;
}

// The whole file's digest (MD5, or XXH3 when `fast`) read in large chunks, noting its first and
// last blocks on the way.
std::optional<Fingerprint::Digest> readWhole(
    int fd, qint64 size, bool fast, DigestCache::Entry& learnt, qint64& bytesRead) {
    ::posix_fadvise(fd, 0, 0, POSIX_FADV_SEQUENTIAL);
    QCryptographicHash hash(QCryptographicHash::Md5);
    std::unique_ptr<XXH3_state_t, decltype(&XXH3_freeState)> fastHash(XXH3_createState(), &XXH3_freeState);
    if (fast)
        XXH3_128bits_reset(fastHash.get());
    static constexpr qint64 kChunk = 128 * 1024;
    std::unique_ptr<char[]> buffer(new char[kChunk]);
    qint64 offset = 0;
    ssize_t lastChunk = 0;
    for (;;) {
        const ssize_t n = ::read(fd, buffer.get(), kChunk);
        if (n < 0) {
            if (errno == EINTR)
                continue;
            return std::nullopt;
        }
        if (n == 0)
            break;
        // A short first read (which local files do not give) leaves the first block unnoted.
        if (offset == 0 && n >= HashPool::kBlock)
            learnt.first = HashPool::blockDigest(buffer.get(), HashPool::kBlock);
        bytesRead += n;
        offset += n;
        lastChunk = n;
        if (fast)
            XXH3_128bits_update(fastHash.get(), buffer.get(), static_cast<size_t>(n));
        else
            hash.addData(QByteArrayView(buffer.get(), n));
    }
    Fingerprint::Digest out;
    if (fast) {
        out = fastDigestOf(XXH3_128bits_digest(fastHash.get()));
        learnt.fast = out;
    } else {
        const QByteArray digest = hash.result();
        std::memcpy(out.data(), digest.constData(), out.size());
        learnt.whole = out;
    }
    if (lastChunk >= HashPool::kBlock)
        learnt.last = HashPool::blockDigest(buffer.get() + lastChunk - HashPool::kBlock, HashPool::kBlock);
    else
        learnt.last = blockAt(fd, size - HashPool::kBlock, bytesRead);
    return out;
}

// A file of at most one block, read with one call: its length is known, so no further call is
// needed to meet its end (a file that grew or shrank meanwhile is caught by the check after).
std::optional<Fingerprint::Digest> readShort(int fd, qint64 size, bool fast, qint64& bytesRead) {
    char buffer[HashPool::kBlock];
    qint64 got = 0;
    if (size > 0 && (!readAt(fd, buffer, size, 0, got) || got != size))
        return std::nullopt;
    bytesRead += got;
    if (fast)
        return fastDigestOf(XXH3_128bits(buffer, static_cast<size_t>(got)));
    const QByteArray digest = QCryptographicHash::hash(QByteArrayView(buffer, got), QCryptographicHash::Md5);
    Fingerprint::Digest out;
    std::memcpy(out.data(), digest.constData(), out.size());
    return out;
}

void logChanged(const QByteArray& path) {
    Log::line(QStringLiteral("changed during the scan, compared with nothing: %1").arg(PathBytes::display(path)));
}

// Answers the job from the cache alone when it holds the part asked for, without opening the file.
bool answerFromCache(const HashPool::Job& job, const DigestCache::Entry& known) {
    switch (job.part) {
    case HashPool::Part::Whole:
    case HashPool::Part::WholeFast: {
        const std::optional<DigestCache::Digest>& stored
            = job.part == HashPool::Part::WholeFast ? known.fast : known.whole;
        if (!stored)
            return false;
        *job.slot = Fingerprint::fromDigest(*stored);
        return true;
    }
    case HashPool::Part::FirstBlock:
        if (!known.first)
            return false;
        job.probe->first = *known.first;
        // Not opened, so where it lies is not known: the inode number orders any whole read.
        job.probe->location = job.key.inode;
        return true;
    case HashPool::Part::LastBlock:
        if (!known.last)
            return false;
        job.probe->last = *known.last;
        return true;
    }
    return false;
}

// Reads what the job asks for, or takes it from the cache; answers the number of bytes read.
bool answeredByCache(const HashPool::Job& job, DigestCache* cache) {
    if (!cache || job.key.inode == 0)
        return false;
    const std::optional<DigestCache::Entry> known = cache->find(job.key);
    return known && answerFromCache(job, *known);
}

// What a reader keeps between jobs: the folder its last file lay in and, once a second file of the
// same folder follows, that folder open, so that the files after it are opened by their names alone
// instead of by their whole paths.
struct ReaderState {
    const FolderTreeNode* folder = nullptr;
    FileSystem::Fd folderFd;
};

// O_NONBLOCK keeps a FIFO that replaced a file since the walk from blocking the open; such an item
// is then refused because it is not a regular file.
int openJobFile(const HashPool::Job& job, ReaderState& reader) {
    constexpr int kFlags = O_RDONLY | O_NONBLOCK | O_NOFOLLOW | O_CLOEXEC;
    if (job.folder) {
        if (reader.folder != job.folder) {
            reader.folder = job.folder;
            reader.folderFd = FileSystem::Fd();
        } else if (!reader.folderFd.isValid()) {
            reader.folderFd = FileSystem::Fd(FileSystem::openPath(job.folder->path, O_PATH | O_DIRECTORY));
        }
        if (reader.folderFd.isValid()) {
            const QByteArray& name = job.folder->children[static_cast<size_t>(job.child)].name;
            return ::openat(reader.folderFd.get(), name.constData(), kFlags);
        }
    }
    return FileSystem::openPath(job.filePath(), kFlags);
}

void settleFailure(const HashPool::Job& job, const Fingerprint& failure) {
    if (job.slot) {
        *job.slot = failure;
    } else {
        job.probe->failed = true;
        job.probe->failure = failure;
    }
}

Fingerprint openFailure() {
    return errno == ENOENT || errno == ENOTDIR ? Fingerprint::vanished() : Fingerprint::noHash();
}

// A whole file of one block or less: opened, read with one call and looked at once afterwards. It
// must then still be the regular file the walk saw, with the same length and times, so what was
// read is what the walk saw.
qint64 readShortJob(const HashPool::Job& job, DigestCache* cache, ReaderState& reader) {
    FileSystem::Fd fd(openJobFile(job, reader));
    if (!fd.isValid()) {
        *job.slot = openFailure();
        return 0;
    }
    const bool fast = job.part == HashPool::Part::WholeFast;
    qint64 bytesRead = 0;
    const std::optional<Fingerprint::Digest> digest = readShort(fd.get(), job.key.size, fast, bytesRead);
    struct stat st;
    if (::fstat(fd.get(), &st) != 0) {
        *job.slot = Fingerprint::noHash();
        return bytesRead;
    }
    const DigestCache::Key key = keyOf(st);
    if (!S_ISREG(st.st_mode) || key.device != job.key.device || key.inode != job.key.inode || key.size != job.key.size
        || key.modifiedNs != job.key.modifiedNs || key.changedNs != job.key.changedNs) {
        logChanged(job.filePath());
        *job.slot = createRandomBytes();
        return bytesRead;
    }
    if (!digest) {
        *job.slot = Fingerprint::noHash();
        return bytesRead;
    }
    *job.slot = Fingerprint::fromDigest(*digest);
    if (cache && key.changedNs <= nowNs() - cache->settleNs()) {
        DigestCache::Entry learnt;
        (fast ? learnt.fast : learnt.whole) = *digest;
        cache->store(key, learnt);
    }
    return bytesRead;
}

qint64 readJob(const HashPool::Job& job, DigestCache* cache, ReaderState& reader) {
    // The walk's key finds the entry before anything is opened: a rescan of an unchanged tree opens
    // no file at all.
    if (answeredByCache(job, cache))
        return 0;
    const bool whole = job.part == HashPool::Part::Whole || job.part == HashPool::Part::WholeFast;
    if (whole && job.key.size <= HashPool::kBlock && job.key.inode != 0)
        return readShortJob(job, cache, reader);
    const QByteArray path = job.filePath();
    FileSystem::Fd fd(openJobFile(job, reader));
    struct stat st;
    // A file gone since the walk is left out; one that cannot be opened is "NOHash"; one that is no
    // longer the regular file of the walk's length matches nothing. None of them is ever grouped.
    std::optional<Fingerprint> failure;
    if (!fd.isValid()) {
        failure = openFailure();
    } else if (::fstat(fd.get(), &st) != 0) {
        failure = Fingerprint::noHash();
    } else if (!S_ISREG(st.st_mode) || st.st_size != job.key.size) {
        logChanged(path);
        failure = createRandomBytes();
    }
    if (failure) {
        settleFailure(job, *failure);
        return 0;
    }
    const qint64 size = st.st_size;
    const DigestCache::Key key = keyOf(st);
    DigestCache::Entry learnt;
    qint64 bytesRead = 0;
    bool ok = true;
    switch (job.part) {
    case HashPool::Part::Whole:
    case HashPool::Part::WholeFast: {
        const bool fast = job.part == HashPool::Part::WholeFast;
        std::optional<Fingerprint::Digest> digest;
        if (size <= HashPool::kBlock) {
            digest = readShort(fd.get(), size, fast, bytesRead);
            if (digest)
                (fast ? learnt.fast : learnt.whole) = *digest;
        } else {
            digest = readWhole(fd.get(), size, fast, learnt, bytesRead);
        }
        ok = digest.has_value();
        // An empty file was not read, so it cannot have changed while it was.
        if (ok && size > 0 && !unchangedSince(fd.get(), st)) {
            logChanged(path);
            *job.slot = createRandomBytes();
            return bytesRead;
        }
        *job.slot = digest ? Fingerprint::fromDigest(*digest) : Fingerprint::noHash();
        break;
    }
    case HashPool::Part::FirstBlock:
        job.probe->location = locationOf(fd.get(), st);
        learnt.first = blockAt(fd.get(), 0, bytesRead);
        job.probe->failed = !learnt.first;
        job.probe->first = learnt.first.value_or(0);
        ok = learnt.first.has_value();
        break;
    case HashPool::Part::LastBlock:
        learnt.last = blockAt(fd.get(), std::max<qint64>(0, size - HashPool::kBlock), bytesRead);
        job.probe->failed = !learnt.last;
        job.probe->last = learnt.last.value_or(0);
        ok = learnt.last.has_value();
        break;
    }
    // Stored only when the file did not change while it was read, and not so recently that a
    // change within the same time-stamp tick could still follow unseen.
    if (cache && ok && nanoseconds(st.st_ctim) <= nowNs() - cache->settleNs()
        && (size == 0 || unchangedSince(fd.get(), st)))
        cache->store(key, learnt);
    return bytesRead;
}

// Whether the block device holding `device` spins, from sysfs; a partition's answer is its disk's.
// A virtual disk (virtio, Xen) says "rotational" by default whatever stores it, and one reader would
// only leave the host's parallelism unused, so it counts as solid-state.
bool isRotational(dev_t device) {
    const QString node = QStringLiteral("/sys/dev/block/%1:%2").arg(major(device)).arg(minor(device));
    QString folder = QFileInfo(node).canonicalFilePath();
    for (int up = 0; up < 2 && !folder.isEmpty(); ++up) {
        QFile file(folder + QStringLiteral("/queue/rotational"));
        if (file.open(QIODevice::ReadOnly)) {
            if (file.readAll().trimmed() != "1")
                return false;
            const QString driver = QFileInfo(folder + QStringLiteral("/device/driver")).canonicalFilePath();
            const QString name = QFileInfo(driver).fileName();
            return name != QLatin1String("virtio_blk") && name != QLatin1String("vbd")
                && name != QLatin1String("xen-blkfront");
        }
        folder = QFileInfo(folder).path();
    }
    return false;
}

} // namespace

quint64 HashPool::blockDigest(const char* data, qint64 length) {
    return XXH3_64bits(data, static_cast<size_t>(length));
}

HashPool::Options HashPool::optionsForTargets(const QList<QByteArray>& targets) {
    std::set<dev_t> disks;
    for (const QByteArray& target : targets) {
        FileSystem::ItemInfo info;
        if (!FileSystem::stat(target, info))
            continue;
        if (!isRotational(info.device))
            return Options {};
        disks.insert(info.device);
    }
    if (disks.empty())
        return Options {};
    Options options;
    options.threads = static_cast<int>(disks.size());
    options.diskOrder = true;
    return options;
}

HashPool::HashPool(std::atomic<qint64>& finishedCounter, Options options)
    : m_finished(finishedCounter)
    , m_options(options) {
    int threads = options.threads;
    if (threads <= 0)
        threads = static_cast<int>(std::max(1u, std::thread::hardware_concurrency()));
    for (int i = 0; i < threads; ++i)
        m_threads.emplace_back([this] { work(); });
}

HashPool::~HashPool() {
    {
        std::lock_guard lock(m_mutex);
        m_stopping = true;
    }
    m_hasWork.notify_all();
    for (std::thread& thread : m_threads)
        thread.join();
}

// Heap order: true when `a` is to be read after `b`.
bool HashPool::before(const Queued& a, const Queued& b) const {
    if (m_options.diskOrder) {
        if (a.job.order != b.job.order)
            return a.job.order > b.job.order;
        return a.serial > b.serial;
    }
    // Files below a megabyte take little time each: they go in the order they came, which keeps a
    // folder's files together.
    constexpr qint64 kLarge = 1024 * 1024;
    const qint64 sizeA = std::max(a.job.key.size, kLarge);
    const qint64 sizeB = std::max(b.job.key.size, kLarge);
    if (sizeA != sizeB)
        return sizeA < sizeB;
    return a.serial > b.serial;
}

void HashPool::push(Job&& job) {
    m_queue.push_back({ std::move(job), m_serial++ });
    std::push_heap(m_queue.begin(), m_queue.end(), [this](const Queued& a, const Queued& b) { return before(a, b); });
}

QByteArray HashPool::Job::filePath() const {
    if (!folder)
        return path;
    return PathBytes::appendingComponent(folder->path, folder->children[static_cast<size_t>(child)].name);
}

void HashPool::submit(std::vector<Job>&& jobs) {
    if (m_options.cache && m_options.cache->isLoaded()) {
        std::erase_if(jobs, [this](const Job& job) {
            if (!answeredByCache(job, m_options.cache))
                return false;
            if (job.slot)
                m_finished.fetch_add(1, std::memory_order_relaxed);
            return true;
        });
    }
    if (jobs.empty())
        return;
    {
        std::lock_guard lock(m_mutex);
        for (Job& job : jobs)
            push(std::move(job));
    }
    m_hasWork.notify_all();
}

void HashPool::submit(Job&& job) {
    {
        std::lock_guard lock(m_mutex);
        push(std::move(job));
    }
    m_hasWork.notify_one();
}

void HashPool::waitForRoom(size_t limit) {
    std::unique_lock lock(m_mutex);
    if (m_queue.size() <= limit)
        return;
    // Woken once the readers have taken half of it, so that the walk goes on in long stretches.
    m_roomWanted = std::max<size_t>(1, limit / 2);
    m_room.wait(lock, [&] { return m_queue.size() <= m_roomWanted; });
    m_roomWanted = 0;
}

void HashPool::waitForAll() {
    std::unique_lock lock(m_mutex);
    m_idle.wait(lock, [this] { return m_queue.empty() && m_running == 0; });
}

void HashPool::work() {
    ReaderState reader;
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_hasWork.wait(lock, [this] { return m_stopping || !m_queue.empty(); });
        if (m_queue.empty())
            return;
        std::pop_heap(
            m_queue.begin(), m_queue.end(), [this](const Queued& a, const Queued& b) { return before(a, b); });
        Job job = std::move(m_queue.back().job);
        m_queue.pop_back();
        if (m_roomWanted != 0 && m_queue.size() <= m_roomWanted)
            m_room.notify_all();
        ++m_running;
        lock.unlock();

        const qint64 bytes = readJob(job, m_options.cache, reader);
        if (m_options.bytesRead)
            m_options.bytesRead->fetch_add(bytes, std::memory_order_relaxed);
        if (job.slot)
            m_finished.fetch_add(1, std::memory_order_relaxed);

        lock.lock();
        --m_running;
        if (m_queue.empty() && m_running == 0)
            m_idle.notify_all();
    }
}
