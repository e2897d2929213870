#pragma once

#include <QAbstractListModel>
#include <functional>
#include <vector>

#include "moxui/backend/detail/drawing/FittedText.h"
#include "moxui/drawbot/ImageInterface.h"

namespace moxui::backend {

/// The entries of a drop-down menu.
class MenuModel : public QAbstractListModel {
public:
    enum class Kind { Item, CustomIconItem, Heading };

    using QAbstractListModel::QAbstractListModel;

    /// Answers with the picture of a CustomIconItem, or null.
    std::function<boost::intrusive_ptr<drawbot::ImageInterface>(int row)> picture;

    void Append(Kind kind, moxcore::string::UTF16String const& text) {
        Insert(rowCount(), kind, text);
    }
    /// Before the entry at `row`, or at the end where there is none.
    void Insert(int row, Kind kind, moxcore::string::UTF16String const& text);
    /// Nothing where there is no entry.
    void Remove(int row);
    void Clear();
    /// Nothing where there is no entry.
    void SetEnabled(int row, bool enabled);
    void EnableAll();

    [[nodiscard]] bool IsHeading(int row) const;
    /// Whether the entry is there and is no heading.
    [[nodiscard]] bool IsItem(int row) const;
    /// Whether the user may choose the entry.
    [[nodiscard]] bool CanBeChosen(int row) const;
    /// Empty where there is no entry.
    [[nodiscard]] FittedText const& Text(int row) const;
    [[nodiscard]] boost::intrusive_ptr<drawbot::ImageInterface> Picture(int row) const;
    /// Whether any entry has a picture, for which all leave room.
    [[nodiscard]] bool HasPictures() const { return hasPictures; }
    /// The width of the widest text in `font`.
    [[nodiscard]] int WidestText(QFont const& font) const;

    int rowCount(QModelIndex const& parent = {}) const override;
    Qt::ItemFlags flags(QModelIndex const& index) const override;
    QVariant data(QModelIndex const& index, int role) const override;

private:
    struct Entry {
        Kind kind;
        FittedText text;
        bool enabled = true;
    };

    [[nodiscard]] Entry const* At(int row) const;

    std::vector<Entry> entries;
    bool hasPictures = false;
};

}  // namespace moxui::backend
