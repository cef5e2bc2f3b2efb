#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QList>
#include <QString>
#include <cstdio>
#include <optional>

// The record of every removal, kept so that a removal can be undone: one file per removal in
// $XDG_DATA_HOME/twinsift/journal/ (~/.local/share/twinsift/journal/), one JSON object per line.
// Before an item is touched its record ("begin": the action, the item's path bytes, size,
// modification time, permissions and digest as checked, the kept copy) is written to the file;
// after it, a "done" line says what is left in its place (the trash entry and its .trashinfo, or the
// link or link file made) or a "failed" line why not. A crash of the program part-way leaves a
// journal whose last "begin" without an end says exactly where it stopped. The file is flushed to
// the disk at most every 0.2 s of removal, and at the end (see flush()). Undoing appends "undone"
// lines. Paths are written in base64, so any name comes back byte for byte.
class Journal {
public:
    struct Entry {
        qint64 seq = 0;
        QString action; // "trash", "delete", "alias", "symlink", "hardlink"
        QByteArray path;
        qint64 size = 0;
        qint64 modifiedNs = 0;
        uint mode = 0;
        QByteArray digest; // MD5 of a file's bytes, hex; empty for folders
        QByteArray kept;
        QByteArray leftBehind; // the trash entry, the link, or the link file
        QByteArray trashInfo; // the .trashinfo of a trash entry
        enum class State { Begun, Done, Failed, Undone } state = State::Begun;
    };
    struct Removal {
        QByteArray file; // the journal file
        QString id; // its name without the extension
        QDateTime started;
        QList<Entry> entries;
        // The items the removal acted on (put back since or not), and their bytes.
        qsizetype doneCount() const;
        qint64 doneBytes() const;
        // Items acted on and not put back yet (a permanent delete among them, which cannot be).
        bool hasDone() const;
        // Something was put back and nothing that could be is left.
        bool undone() const;
    };

    // The folder of the journals for the current environment (not created).
    static QByteArray folder();
    // Every removal recorded, oldest first.
    static QList<Removal> list();
    static std::optional<Removal> read(const QByteArray& file);

    // A new journal, made on the first begin().
    Journal() = default;
    ~Journal();
    Journal(const Journal&) = delete;
    Journal& operator=(const Journal&) = delete;

    // Writes the record of an item about to be acted on; answers its number, or -1 when the journal
    // cannot be written (the item must then be left alone).
    qint64 begin(const Entry& entry);
    void done(qint64 seq, const QByteArray& leftBehind, const QByteArray& trashInfo);
    void failed(qint64 seq, const QString& reason);
    // Puts every record written so far on the disk: at the end of a removal, however it ended.
    void flush();
    const QByteArray& file() const { return m_file; }

    // Appends that entry `seq` of the journal `file` was undone.
    static bool markUndone(const QByteArray& file, qint64 seq);

private:
    bool append(const QByteArray& line);

    QByteArray m_file;
    int m_fd = -1;
    qint64 m_next = 1;
    bool m_unsynced = false;
    qint64 m_syncedAtMs = 0; // monotonic clock of the last flush
};
