#include "cli/CommandLine.h"

#include "base/ByteCountFormatter.h"
#include "base/DigestCache.h"
#include "base/FileSystem.h"
#include "base/Log.h"
#include "base/PathBytes.h"
#include "base/SettingsStore.h"
#include "cli/CommandLineJournal.h"
#include "cli/CommandLineRemoval.h"
#include "cli/ResultWriter.h"
#include "engine/ScanDriver.h"
#include "engine/ScanObserver.h"
#include "engine/ScanState.h"

#include <optional>
#include <unistd.h>

namespace CommandLine {

namespace {

const char* const kUsage = R"(Usage: twinsift scan [options] PATH...
       twinsift photos [options] PATH...
       twinsift journal [--format text|json]
       twinsift undo [--list] [--yes] [ID]

Finds duplicate files and folders below each PATH with the stored settings and prints the groups.
`photos` scans PATH as a photo library: pictures and audio-visual files only.

Options (for this run only; the stored settings are not changed):
  --subdirs y|n            descend into sub-folders
  --hidden y|n             include hidden items inside scanned folders
  --packages y|n           look inside bundles
  --min-size BYTES         minimum size on disk of a file to report
  --ignore-types LIST      comma-separated lower-case extensions never hashed (may be empty)
  --ignore-folder PATH     folder skipped with everything below (repeatable; replaces the list)
  --protect PATH           folder scanned as usual whose copies are never chosen or removed
                           (repeatable; added to the protected folders of the settings)
  --format text|json|csv   output format (text by default)
  --progress               live status line on standard error (default when it is a terminal)
  --no-progress            no status line
  --verbose                copy the program's log lines (always sent to the system log) to
                           standard error
  --no-cache               read every file, neither using nor filling the digest cache
  -h, --help               show this help
  --version                show the version

Removal (scan only; prints text):
  --keep newest|oldest     in every group choose all copies but the newest (or the oldest) by
                           creation date and list them: chosen, path, kept copy
  --action ACTION          with --keep: print the plan for ACTION, one line per file (action,
                           path, kept copy), and change nothing. ACTION is one of
                             trash     move to the desktop trash
                             delete    remove for good (folders with everything in them)
                             alias     replace by a link file PATH.Alise to the kept copy
                             symlink   replace by a symbolic link to the kept copy
                             hardlink  replace by a hard link to the kept copy
  --yes                    with --action: carry the plan out, one line per file (trashed,
                           deleted, ... or failed with the reason), then the totals left;
                           exit status 1 when any file failed
)";

struct Options {
    QByteArray command;
    std::optional<QString> subdirs, hidden, packages;
    std::optional<qint64> minSize;
    std::optional<QStringList> ignoreTypes;
    std::optional<QList<QByteArray>> ignoreFolders;
    QList<QByteArray> protectedFolders;
    ResultWriter::Format format = ResultWriter::Format::Text;
    bool progress = false;
    bool cache = true;
    QList<QByteArray> paths;
    std::optional<CommandLineRemoval::Keep> keep;
    std::optional<RemovalActions::Action> action;
    bool yes = false;
    bool formatGiven = false;
    bool verbose = false;
    bool help = false;
};

struct UsageError {
    QByteArray message;
};

QByteArray optionName(const QByteArray& argument) {
    const qsizetype equals = argument.indexOf('=');
    return equals < 0 ? argument : argument.left(equals);
}

Options parse(const QList<QByteArray>& arguments) {
    Options options;
    options.progress = ::isatty(STDERR_FILENO);
    if (arguments.isEmpty())
        throw UsageError { "missing command (scan or photos)" };
    options.command = arguments.first();
    if (options.command != "scan" && options.command != "photos")
        throw UsageError { "unknown command '" + options.command + "'" };

    bool optionsEnded = false;
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QByteArray& argument = arguments[i];
        // Help wins over whatever follows it, as in `twinsift scan PATH --help`.
        if (!optionsEnded && (argument == "--help" || argument == "-h")) {
            options.help = true;
            return options;
        }
        if (optionsEnded || !argument.startsWith("--") || argument == "--") {
            if (argument == "--" && !optionsEnded) {
                optionsEnded = true;
                continue;
            }
            // An empty word is no path at all (it would otherwise mean the current folder).
            if (argument.isEmpty())
                throw UsageError { "empty PATH given" };
            options.paths.append(argument);
            continue;
        }
        const QByteArray name = optionName(argument);
        auto value = [&]() -> QByteArray {
            if (argument.contains('='))
                return argument.mid(argument.indexOf('=') + 1);
            if (i + 1 >= arguments.size())
                throw UsageError { "option '" + name + "' needs a value" };
            return arguments[++i];
        };
        auto flag = [&]() -> QString {
            const QByteArray v = value();
            if (v != "y" && v != "n")
                throw UsageError { "option '" + name + "' takes y or n, not '" + v + "'" };
            return QString::fromLatin1(v);
        };
        if (name == "--subdirs") {
            options.subdirs = flag();
        } else if (name == "--hidden") {
            options.hidden = flag();
        } else if (name == "--packages") {
            options.packages = flag();
        } else if (name == "--min-size") {
            const QByteArray v = value();
            bool ok = false;
            const qint64 bytes = v.toLongLong(&ok);
            if (!ok || bytes < 0)
                throw UsageError { "option '--min-size' takes a number of bytes, not '" + v + "'" };
            options.minSize = bytes;
        } else if (name == "--ignore-types") {
            const QString list = QString::fromUtf8(value());
            options.ignoreTypes = list.isEmpty() ? QStringList() : plainExtensions(list.split(QLatin1Char(',')));
        } else if (name == "--ignore-folder") {
            if (!options.ignoreFolders)
                options.ignoreFolders = QList<QByteArray>();
            options.ignoreFolders->append(PathBytes::normalized(value(), PathBytes::currentDirectory()));
        } else if (name == "--protect") {
            options.protectedFolders.append(PathBytes::normalized(value(), PathBytes::currentDirectory()));
        } else if (name == "--format") {
            options.formatGiven = true;
            const QByteArray v = value();
            if (v == "text")
                options.format = ResultWriter::Format::Text;
            else if (v == "json")
                options.format = ResultWriter::Format::Json;
            else if (v == "csv")
                options.format = ResultWriter::Format::Csv;
            else
                throw UsageError { "option '--format' takes text, json or csv, not '" + v + "'" };
        } else if (name == "--keep") {
            const QByteArray v = value();
            if (v == "newest")
                options.keep = CommandLineRemoval::Keep::Newest;
            else if (v == "oldest")
                options.keep = CommandLineRemoval::Keep::Oldest;
            else
                throw UsageError { "option '--keep' takes newest or oldest, not '" + v + "'" };
        } else if (name == "--action") {
            const QByteArray v = value();
            options.action = CommandLineRemoval::actionOfWord(v);
            if (!options.action)
                throw UsageError { "option '--action' takes trash, delete, alias, symlink or hardlink, not '" + v
                    + "'" };
        } else if (argument == "--yes") {
            options.yes = true;
        } else if (argument == "--progress") {
            options.progress = true;
        } else if (argument == "--no-progress") {
            options.progress = false;
        } else if (argument == "--verbose") {
            options.verbose = true;
        } else if (argument == "--no-cache") {
            options.cache = false;
        } else {
            throw UsageError { "unknown option '" + name + "'" };
        }
    }
    if (options.yes && !options.action)
        throw UsageError { "option '--yes' needs --action" };
    if (options.action && !options.keep)
        throw UsageError { "option '--action' needs --keep" };
    if (options.keep && options.command != "scan")
        throw UsageError { "option '--keep' works with scan only" };
    if (options.keep && options.formatGiven && options.format == ResultWriter::Format::Csv)
        throw UsageError { "option '--keep' prints text or json, not --format csv" };
    if (options.paths.isEmpty())
        throw UsageError { "no PATH given" };
    return options;
}

void applyOverrides(const Options& options, ScanSettings& settings) {
    if (options.subdirs)
        settings.checkSubDir = *options.subdirs;
    if (options.hidden)
        settings.checkHdn = *options.hidden;
    if (options.packages)
        settings.checkPKG = *options.packages;
    if (options.minSize)
        settings.nub = *options.minSize;
    if (options.ignoreTypes)
        settings.ignoreFileTypeList = *options.ignoreTypes;
    if (options.ignoreFolders)
        settings.ignoreFolderList = *options.ignoreFolders;
    for (const QByteArray& folder : options.protectedFolders) {
        if (!settings.protectedFolderList.contains(folder))
            settings.protectedFolderList.append(folder);
    }
}

// The command line's side of a scan: the endings run in place on the scan thread.
class ConsoleObserver : public ScanObserver {
public:
    explicit ConsoleObserver(ScanDriver*& driver)
        : m_driver(driver) { }
    void afterScanningDone() override { m_driver->AfterScanningDone(); }
    void afterScan() override { m_driver->state().isScanRunning = false; }

private:
    ScanDriver*& m_driver;
};

// For the length of a command, the program's log lines go to the system log and, when asked for,
// to standard error; never to standard output, which carries the results.
class ConsoleLog {
public:
    ConsoleLog(std::FILE* err, bool toStderr, bool clearStatusLine) {
        Log::setSink([err, toStderr, clearStatusLine](const QString& line) {
            Log::writeSystemLog(line);
            if (!toStderr)
                return;
            // A log line clears the status line first, so the two never share a line.
            std::fprintf(err, "%s%s\n", clearStatusLine ? "\r\033[K" : "", line.toUtf8().constData());
            std::fflush(err);
        });
    }
    ~ConsoleLog() { Log::setSink({}); }
    ConsoleLog(const ConsoleLog&) = delete;
    ConsoleLog& operator=(const ConsoleLog&) = delete;
};

class ProgressLine {
public:
    ProgressLine(std::FILE* err, bool enabled)
        : m_err(err)
        , m_enabled(enabled) { }
    ~ProgressLine() {
        if (!m_enabled)
            return;
        std::fprintf(m_err, "\r\033[K");
        std::fflush(m_err);
    }
    void show(const ScanState& state, bool listScan) {
        if (!m_enabled)
            return;
        const qint64 total = state.totalDuplicateCountFiles;
        const qint64 done = listScan ? state.totalDuplicateCountFolderTemp.load()
                                     : static_cast<qint64>(state.totalDuplicateCountTemp.load());
        const qint64 found
            = listScan ? state.totalDuplicateCountFolder.load() : static_cast<qint64>(state.totalDuplicateCount.load());
        const qint64 bytes
            = listScan ? state.DuplicateWastedSpace.load() : static_cast<qint64>(state.wastedSpaceDuplicates.load());
        QString text = QStringLiteral("Scanned %1 items, %2 duplicates (%3)")
                           .arg(ByteCountFormatter::grouped(state.totalCount), QString::number(found),
                               bytes == 0 ? QStringLiteral("0 Byte") : ByteCountFormatter::decimal(bytes));
        if (total > 0)
            text += QStringLiteral(", grouping %1%").arg(done * 100 / total);
        std::fprintf(m_err, "\r\033[K%s", text.toUtf8().constData());
        std::fflush(m_err);
    }

private:
    std::FILE* m_err;
    bool m_enabled;
};

} // namespace

int run(const QList<QByteArray>& arguments, std::FILE* out, std::FILE* err) {
    if (!arguments.isEmpty() && (arguments.first() == "--help" || arguments.first() == "-h")) {
        std::fputs(kUsage, out);
        return Success;
    }
    if (!arguments.isEmpty() && arguments.first() == "--version") {
        std::fprintf(out, "twinsift %s\n", TWINSIFT_VERSION);
        return Success;
    }
    if (!arguments.isEmpty() && CommandLineJournal::handles(arguments.first()))
        return CommandLineJournal::run(arguments, out, err);
    Options options;
    try {
        options = parse(arguments);
    } catch (const UsageError& error) {
        std::fprintf(err, "twinsift: %s (see twinsift --help)\n", error.message.constData());
        return Usage;
    }
    if (options.help) {
        std::fputs(kUsage, out);
        return Success;
    }
    const ConsoleLog log(err, options.verbose || Log::stderrEnabled(), options.progress);

    int status = Success;
    const QByteArray cwd = PathBytes::currentDirectory();
    QList<QByteArray> targets;
    for (const QByteArray& path : options.paths) {
        // A symbolic link stands for what it names; one that dangles or loops names nothing.
        const QByteArray target = FileSystem::resolveTarget(PathBytes::normalized(path, cwd));
        if (target.isEmpty()) {
            std::fprintf(err, "twinsift: %s: No such file or directory\n", ResultWriter::textPath(path).constData());
            status = Failure;
            continue;
        }
        targets.append(target);
    }

    ScanState state;
    if (options.cache)
        state.digestCacheFolder = DigestCache::defaultFolder();
    ScanDriver* driverRef = nullptr;
    ConsoleObserver observer(driverRef);
    ScanDriver driver(state, observer);
    driverRef = &driver;
    driver.loadSettings = [&options](ScanSettings& settings) {
        SettingsStore store;
        getAppSetting(settings, store);
        applyOverrides(options, settings);
    };

    const bool listScan = options.command == "photos";
    {
        ProgressLine progress(err, options.progress);
        if (listScan) {
            state.PhotoDir = targets;
            state.photoScan = true;
            driver.scanStart();
        } else {
            driver.StartScan(targets);
        }
        while (!driver.waitForScanThread(100))
            progress.show(state, listScan);
    }

    if (options.keep) {
        const CommandLineRemoval::Request request { *options.keep, options.action, options.yes,
            options.format == ResultWriter::Format::Json };
        const int removal = CommandLineRemoval::run(state, request, out);
        return status != Success ? status : removal;
    }

    ResultWriter::write(
        state, listScan ? ResultWriter::Source::ListScan : ResultWriter::Source::FolderScan, options.format, out);
    std::fflush(out);
    return status;
}

} // namespace CommandLine
