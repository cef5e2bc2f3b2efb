#pragma once

#include <functional>

// The points where a scan hands over to whoever shows it. They are called on the scan thread; a
// window implementation runs them on its own thread and waits where noted, the command line runs
// them in place. Every method has an empty default.
class ScanObserver {
public:
    virtual ~ScanObserver() = default;

    // Called on the thread that starts a scan, once the state is reset and before the scan thread
    // starts: the window resets its screens and starts its timers here.
    virtual void folderScanWillStart() { }
    virtual void listScanWillStart() { }

    // Folder scan: grouping starts (the progress indicator becomes determinate; waits).
    virtual void detectionWillStart() { }
    // Folder scan: grouping is done (the animation stops and "Done Scanning" shows; waits).
    virtual void detectionDidFinish() { }
    // Folder scan: the ending, run on the interface's thread while the scan thread waits.
    virtual void afterScanningDone() { }

    // List scan: the walk is about to begin (the animation text once, the popover's bar hidden;
    // waits).
    virtual void listScanWillWalk() { }
    // List scan: the status popover's progress runs (1) or measures grouping (0).
    virtual void setFlo(int) { }
    // List scan: grouping is done (the popover's bar hides, the figures refresh; does not wait).
    virtual void listGroupingDidFinish() { }
    // List scan: the ending, run on the interface's thread while the scan thread waits.
    virtual void afterScan() { }
    // List scan, flat routine: the hand-off to grouping is asked of the interface's thread without
    // waiting; the default runs it in place.
    virtual void runScanAddedFolderLater(const std::function<void()>& run) { run(); }
};
