#pragma once

#include <QAbstractListModel>
#include <QStyledItemDelegate>
#include <functional>
#include <vector>

#include "moxui/backend/detail/QtDrawbot.h"

namespace moxui::backend {

/// The entries of a drop-down menu.
class MenuModel : public QAbstractListModel {
public:
    enum class Kind { Item, CustomIconItem, Heading };

    using QAbstractListModel::QAbstractListModel;

    /// Answers with the picture of a CustomIconItem, or null.
    std::function<boost::intrusive_ptr<drawbot::ImageInterface>(int row)> picture;

    void Append(Kind kind, QString const& text);
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
    [[nodiscard]] QString Text(int row) const;
    [[nodiscard]] boost::intrusive_ptr<drawbot::ImageInterface> Picture(int row) const;
    /// Whether any entry has a picture, for which all leave room.
    [[nodiscard]] bool HasPictures() const { return hasPictures; }
    /// The width of the widest entry's text, in `font` and for headings in bold.
    [[nodiscard]] int WidestText(QFont const& font) const;

    int rowCount(QModelIndex const& parent = {}) const override;
    Qt::ItemFlags flags(QModelIndex const& index) const override;
    QVariant data(QModelIndex const& index, int role) const override;

private:
    struct Entry {
        Kind kind;
        QString text;
        bool enabled = true;
    };

    [[nodiscard]] Entry const* At(int row) const;

    std::vector<Entry> entries;
    bool hasPictures = false;
};

/// Draws them.
class MenuDelegate : public QStyledItemDelegate {
public:
    MenuDelegate(MenuModel const& entries, QObject* parent);

    /// The chosen entry, which is set apart from the others; -1 for none.
    int chosen = -1;

    [[nodiscard]] int WidthOfWidest(QFont const& font) const;

    QSize sizeHint(QStyleOptionViewItem const& option, QModelIndex const& index) const override;
    void paint(QPainter* painter, QStyleOptionViewItem const& option,
               QModelIndex const& index) const override;
    bool helpEvent(QHelpEvent* event, QAbstractItemView* view, QStyleOptionViewItem const& option,
                   QModelIndex const& index) override;

private:
    [[nodiscard]] QRect TextRect(QStyleOptionViewItem const& option, int row) const;

    MenuModel const& entries;
};

/// Paints `picture` in the middle of `place`, smaller where it does not fit.
void PaintPicture(QPainter& painter, QRectF const& place, drawbot::ImageInterface const& picture);

}  // namespace moxui::backend
