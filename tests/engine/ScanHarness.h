#pragma once

#include "engine/ScanEngine.h"
#include "engine/ScanObserver.h"
#include "engine/ScanState.h"

#include <QHash>

// Runs the scan routines on the test's thread with settings given in code, and keeps the
// fingerprint table as it stood when grouping began.
class ScanHarness : public ScanObserver {
public:
    ScanHarness() {
        ScanSettings& s = state.settings;
        s.nub = 0;
        s.ignoreFileTypeList = ScanSettings::defaultIgnoreFileTypeList();
        s.ignoreFolderList.clear();
    }

    void detectionWillStart() override { table = state.hashDic.toTextMap(); }
    void afterScan() override { table = listTable; }
    void setFlo(int flo) override {
        if (flo == 1)
            listTable = state.AllFileFolderDic.toTextMap();
    }

    void scan(const QList<QByteArray>& targets) {
        ScanEngine engine(state, *this);
        engine.setReadEverything(readEverything);
        engine.setCacheSettleNs(0); // files made by the test are cached at once
        if (state.settings.checkSubDir == QLatin1String("n"))
            engine.scannigWithoutCheckingSubDirectory(targets);
        else
            engine.scannigWithCheckingSubDirectory(targets);
    }

    QList<QList<QByteArray>> groups() const {
        QList<QList<QByteArray>> out;
        for (const DuplicateGroupPtr& group : state.duplicateMainArray) {
            QList<QByteArray> paths;
            for (const DuplicateFilePtr& file : group->listAll())
                paths.append(file->urlFile());
            std::sort(paths.begin(), paths.end());
            out.append(paths);
        }
        return out;
    }

    // Reading every file keeps each table entry's true fingerprint for the checks; the scan itself
    // leaves unread what nothing could match.
    bool readEverything = true;
    ScanState state;
    QHash<QByteArray, QByteArray> table;
    QHash<QByteArray, QByteArray> listTable;
};
