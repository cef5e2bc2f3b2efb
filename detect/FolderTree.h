#pragma once

#include "detect/Fingerprint.h"

#include <QByteArray>
#include <deque>
#include <vector>

// The folders of a recursive scan as the walk found them, with every child already classified and,
// once the hashing pool is done, every file's digest in place. The folder nodes then fold it
// bottom-up without touching the disk again.
enum class ChildMarker : uint8_t {
    F, // a regular file whose name does not begin with "."
    D, // a sub-folder to descend into
    FD, // a folder compared as one unit: a bundle, a hidden folder or a framework
};

struct FolderChild {
    QByteArray name;
    qint64 allocated = 0; // files: size on disk, for the minimum-size filter
    qint64 size = 0; // files: length, to hash the largest first
    qint32 node = -1; // walked sub-folders: index of their folder in the tree
    ChildMarker marker = ChildMarker::F;
    // The child's fingerprint is a fresh time-stamp made while folding (an ignored type, an ignored
    // folder, or a folder already entered through another path); excluded folders are not published.
    bool excluded = false;
    Fingerprint fingerprint; // files: filled by the hashing pool; "NOHash" until then
};

struct FolderTreeNode {
    QByteArray path;
    std::vector<FolderChild> children;
    qint32 parent = -1; // folders are added after their parent
    // False when no other folder could share this one's fingerprint and no folder around it needs
    // it: the fingerprint is then not computed and matches nothing.
    bool needsFingerprint = true;
    // False when the walk could not see everything in the folder (it could not be listed or not in
    // full, or it was not entered): its fingerprint then matches nothing.
    bool listedInFull = true;
};

struct FolderTree {
    std::deque<FolderTreeNode> nodes;
};
