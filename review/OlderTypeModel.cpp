#include "review/OlderTypeModel.h"

#include "review/StatusTexts.h"

#include <QIcon>

namespace {

QString iconNameOf(const QString& type) {
    if (type == QLatin1String("Folder"))
        return QStringLiteral("folder");
    if (type == QLatin1String("Photo"))
        return QStringLiteral("image-x-generic");
    if (type == QLatin1String("Media"))
        return QStringLiteral("video-x-generic");
    if (type == QLatin1String("Text"))
        return QStringLiteral("text-x-generic");
    if (type == QLatin1String("Other"))
        return QStringLiteral("application-x-executable");
    return QStringLiteral("edit-copy");
}

} // namespace

void OlderTypeModel::reload(
    const QStringList& types, const QList<GroupDictionary>& result, const QSet<QByteArray>& selected) {
    QList<Figures> figures(types.size());
    for (const GroupDictionary& group : result) {
        for (const FileDictionary& file : group.SameFileList) {
            const bool chosen = selected.contains(file.url);
            for (qsizetype row = 0; row < types.size(); ++row) {
                // The first entry stands for every type.
                if (row != 0 && file.type != types.at(row))
                    continue;
                Figures& of = figures[row];
                ++of.all;
                of.allBytes += file.FileSize;
                if (chosen) {
                    ++of.chosen;
                    of.chosenBytes += file.FileSize;
                }
            }
        }
    }
    if (types == m_types) {
        m_figures = figures;
        if (!m_types.isEmpty())
            emit dataChanged(index(0), index(rowCount() - 1));
        return;
    }
    beginResetModel();
    m_types = types;
    m_figures = figures;
    endResetModel();
}

int OlderTypeModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(m_types.size());
}

QVariant OlderTypeModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= m_types.size())
        return {};
    const QString& type = m_types.at(index.row());
    const Figures& figures = m_figures.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return type.isEmpty() ? QStringLiteral("Untyped") : type;
    case Qt::DecorationRole:
        return QIcon::fromTheme(iconNameOf(type));
    case CountRole:
        return StatusTexts::listCountOf(figures.chosen, figures.all);
    case SizesRole:
        return StatusTexts::listSizesSelected(figures.chosenBytes, figures.allBytes);
    case Qt::AccessibleTextRole:
        return QString(data(index, Qt::DisplayRole).toString() + QStringLiteral(", ")
            + StatusTexts::listCountOf(figures.chosen, figures.all) + QStringLiteral(" chosen"));
    case Qt::AccessibleDescriptionRole:
        return StatusTexts::listSizesSelected(figures.chosenBytes, figures.allBytes);
    default:
        return {};
    }
}
