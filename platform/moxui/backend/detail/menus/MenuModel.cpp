#include "moxui/backend/detail/menus/MenuModel.h"

#include <algorithm>

namespace moxui::backend {

void MenuModel::Insert(int row, Kind kind, moxcore::string::UTF16String const& text) {
    row = std::clamp(row, 0, rowCount());
    beginInsertRows({}, row, row);
    auto const entry = entries.insert(entries.begin() + row, {kind, {}});
    entry->text.SetText(text);
    hasPictures |= kind == Kind::CustomIconItem;
    endInsertRows();
}

void MenuModel::Remove(int row) {
    if (!At(row)) return;
    beginRemoveRows({}, row, row);
    entries.erase(entries.begin() + row);
    hasPictures = std::any_of(entries.begin(), entries.end(),
                              [](auto const& entry) { return entry.kind == Kind::CustomIconItem; });
    endRemoveRows();
}

void MenuModel::Clear() {
    beginResetModel();
    entries.clear();
    hasPictures = false;
    endResetModel();
}

void MenuModel::SetEnabled(int row, bool enabled) {
    if (!At(row)) return;
    entries[static_cast<std::size_t>(row)].enabled = enabled;
    emit dataChanged(index(row), index(row));
}

void MenuModel::EnableAll() {
    if (entries.empty()) return;
    for (auto& entry : entries)
        entry.enabled = true;
    emit dataChanged(index(0), index(rowCount() - 1));
}

MenuModel::Entry const* MenuModel::At(int row) const {
    return row >= 0 && row < rowCount() ? &entries[static_cast<std::size_t>(row)] : nullptr;
}

bool MenuModel::IsHeading(int row) const {
    auto const* const entry = At(row);
    return entry && entry->kind == Kind::Heading;
}

bool MenuModel::IsItem(int row) const {
    return At(row) && !IsHeading(row);
}

bool MenuModel::CanBeChosen(int row) const {
    return IsItem(row) && At(row)->enabled;
}

FittedText const& MenuModel::Text(int row) const {
    static FittedText const none;
    auto const* const entry = At(row);
    return entry ? entry->text : none;
}

boost::intrusive_ptr<drawbot::ImageInterface> MenuModel::Picture(int row) const {
    auto const* const entry = At(row);
    bool const has = entry && entry->kind == Kind::CustomIconItem && picture;
    return has ? picture(row) : nullptr;
}

int MenuModel::WidestText(QFont const& font) const {
    int widest = 0;
    for (auto const& entry : entries)
        widest = std::max(widest, entry.text.NaturalSize(font).width());
    return widest;
}

int MenuModel::rowCount(QModelIndex const& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(entries.size());
}

Qt::ItemFlags MenuModel::flags(QModelIndex const& index) const {
    return CanBeChosen(index.row()) ? Qt::ItemIsEnabled | Qt::ItemIsSelectable : Qt::NoItemFlags;
}

QVariant MenuModel::data(QModelIndex const& index, int role) const {
    bool const isText = role == Qt::DisplayRole || role == Qt::AccessibleTextRole;
    return isText ? Text(index.row()).GetWhole() : QVariant();
}

}  // namespace moxui::backend
