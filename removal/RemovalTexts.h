#pragma once

#include "removal/RemovalActions.h"

#include <QString>
#include <QStringList>
#include <QUrl>

// The texts of the removal review and of the completion panel.
namespace RemovalTexts {

// "item" for exactly one, "items" otherwise (zero included).
QString itemWord(qsizetype count);

struct Confirmation {
    QString messageText;
    QString informativeText;
};
// The confirmation's texts for an action and a number of files (chageAlertText:). The alias and
// symlink texts say "original file’s" with a typographic apostrophe, the hard-link text "original
// file's" with a plain one.
Confirmation confirmation(RemovalActions::Action action, qsizetype count);

// The alert after the last group went: "Alert" / "Successfully removed all duplicates.".
QString allRemovedMessage();
QString allRemovedInformative();

// What became of an item the action was carried out on, for the list of what a removal did:
// "moved to the trash", "deleted", "replaced by a link file", "replaced by a symbolic link",
// "replaced by a hard link".
QString doneText(RemovalActions::Action action);
// The heading over that list, "Removed 3 of 7 items", and its summary line, "3 moved to the trash,
// 4 left alone" (the failures counted apart: ", 1 could not be removed").
QString outcomeHeading(qsizetype done, qsizetype total);
QString outcomeSummary(RemovalActions::Action action, qsizetype done, qsizetype left, qsizetype failed);

// The completion panel's summary: "You have successfully removed %ld duplicate %@ and freedup %@."
// with the decimal byte-count text of the freed bytes.
QString congoSummary(qsizetype count, qint64 bytes);
// The share text, with "duplicate" for exactly one file and "duplicates" otherwise.
QString shareText(qsizetype count, const QString& link);
// The product page the share text points at.
QString shareLink();
// Of the share services offered, those titled exactly "Facebook" or "Twitter", in their order.
QStringList shareServices(const QStringList& proposed);
// The web share page of "Facebook" or "Twitter" for the text and link, every value percent-encoded
// (https://www.facebook.com/sharer/sharer.php?u=LINK&quote=TEXT,
// https://twitter.com/intent/tweet?text=TEXT&url=LINK); an empty URL for any other service.
QUrl shareUrl(const QString& service, const QString& text, const QString& link);

} // namespace RemovalTexts
