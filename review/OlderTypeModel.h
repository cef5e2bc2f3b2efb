#pragma once

#include "detect/GroupDictionary.h"

#include <QAbstractListModel>
#include <QSet>
#include <QStringList>

// The type list of the scan list's result page (`filterSegmentItem`): "All" and the member types
// found ("Folder", "Photo", "Media", "Text", "Other"). Each row carries "%lu of %lu" (chosen files
// of that type, then all its files) and "%@ of %@ selected" (their sizes), counted over the whole
// result, whatever the search shows.
class OlderTypeModel : public QAbstractListModel {
    Q_OBJECT

public:
    enum Role {
        CountRole = Qt::UserRole + 1,
        SizesRole,
    };

    using QAbstractListModel::QAbstractListModel;

    void reload(const QStringList& types, const QList<GroupDictionary>& result, const QSet<QByteArray>& selected);
    const QStringList& types() const { return m_types; }

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role) const override;

private:
    struct Figures {
        qsizetype chosen = 0;
        qsizetype all = 0;
        qint64 chosenBytes = 0;
        qint64 allBytes = 0;
    };

    QStringList m_types;
    QList<Figures> m_figures;
};
