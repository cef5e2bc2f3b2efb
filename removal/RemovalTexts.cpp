#include "removal/RemovalTexts.h"

#include "base/ByteCountFormatter.h"
#include "review/StatusTexts.h"

namespace RemovalTexts {

QString itemWord(qsizetype count) {
    return count == 1 ? QStringLiteral("item") : QStringLiteral("items");
}

Confirmation confirmation(RemovalActions::Action action, qsizetype count) {
    const QString word = itemWord(count);
    switch (action) {
    case RemovalActions::Action::MoveToTrash:
        return { QStringLiteral("Are you sure you want move selected %1 to trash?").arg(word),
            QStringLiteral("If you choose Yes, %1 will resides in Trash.\n").arg(word) };
    case RemovalActions::Action::PermanentDelete:
        return { QStringLiteral("Are you sure you want permanent erase selected %1?").arg(word),
            QStringLiteral("If you choose Yes, you can not recover %1.\n").arg(word) };
    case RemovalActions::Action::ReplaceWithAlias:
        return { QStringLiteral("Are you sure you want replace selected %1 with alias?").arg(word),
            QStringLiteral("If you choose Yes, %1 will replaced with original file\u2019s alias.").arg(word) };
    case RemovalActions::Action::ReplaceWithSymlink:
        return { QStringLiteral("Are you sure you want replace selected %1 with symlink?").arg(word),
            QStringLiteral("If you choose Yes, %1 will replaced with original file\u2019s symbolic link.").arg(word) };
    case RemovalActions::Action::ReplaceWithHardlink:
        break;
    }
    return { QStringLiteral("Are you sure you want replace selected %1 with hardlink?").arg(word),
        QStringLiteral("If you choose Yes, %1 will replaced with original file's hard link.").arg(word) };
}

QString allRemovedMessage() {
    return QStringLiteral("Alert");
}

QString allRemovedInformative() {
    return QStringLiteral("Successfully removed all duplicates.");
}

QString doneText(RemovalActions::Action action) {
    switch (action) {
    case RemovalActions::Action::MoveToTrash:
        return QStringLiteral("moved to the trash");
    case RemovalActions::Action::PermanentDelete:
        return QStringLiteral("deleted");
    case RemovalActions::Action::ReplaceWithAlias:
        return QStringLiteral("replaced by a link file");
    case RemovalActions::Action::ReplaceWithSymlink:
        return QStringLiteral("replaced by a symbolic link");
    case RemovalActions::Action::ReplaceWithHardlink:
        break;
    }
    return QStringLiteral("replaced by a hard link");
}

QString outcomeHeading(qsizetype done, qsizetype total) {
    return QStringLiteral("Removed %1 of %2 %3")
        .arg(StatusTexts::decimalNumber(static_cast<qint64>(done)),
            StatusTexts::decimalNumber(static_cast<qint64>(total)), itemWord(total));
}

QString outcomeSummary(RemovalActions::Action action, qsizetype done, qsizetype left, qsizetype failed) {
    const auto number = [](qsizetype count) { return StatusTexts::decimalNumber(static_cast<qint64>(count)); };
    QString text = number(done) + QLatin1Char(' ') + doneText(action) + QStringLiteral(", ") + number(left)
        + QStringLiteral(" left alone");
    if (failed)
        text += QStringLiteral(", ") + number(failed) + QStringLiteral(" could not be removed");
    return text;
}

QString congoSummary(qsizetype count, qint64 bytes) {
    return QStringLiteral("You have successfully removed %1 duplicate %2 and freedup %3.")
        .arg(QString::number(count), itemWord(count), ByteCountFormatter::decimal(bytes));
}

QString shareText(qsizetype count, const QString& link) {
    return QStringLiteral("I just cleared %1 %2 using Twinsift for Mac. Check it out here: %3 #twinsift #brindlewick")
        .arg(QString::number(count), count == 1 ? QStringLiteral("duplicate") : QStringLiteral("duplicates"), link);
}

QString shareLink() {
    return QStringLiteral("https://twinsift.app/");
}

QStringList shareServices(const QStringList& proposed) {
    QStringList kept;
    for (const QString& service : proposed) {
        if (service == QLatin1String("Facebook") || service == QLatin1String("Twitter"))
            kept.append(service);
    }
    return kept;
}

QUrl shareUrl(const QString& service, const QString& text, const QString& link) {
    const QByteArray encodedText = QUrl::toPercentEncoding(text);
    const QByteArray encodedLink = QUrl::toPercentEncoding(link);
    if (service == QLatin1String("Facebook"))
        return QUrl::fromEncoded(
            "https://www.facebook.com/sharer/sharer.php?u=" + encodedLink + "&quote=" + encodedText, QUrl::StrictMode);
    if (service == QLatin1String("Twitter"))
        return QUrl::fromEncoded(
            "https://twitter.com/intent/tweet?text=" + encodedText + "&url=" + encodedLink, QUrl::StrictMode);
    return {};
}

} // namespace RemovalTexts
