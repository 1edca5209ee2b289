#include "desktop/models.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHelpEvent>
#include <QPainter>
#include <QPalette>
#include <QToolTip>

#include "desktop/text.h"

namespace qrel {

CheckListModel::CheckListModel(CheckList& list, QStringList titles, bool ticks, bool notes, QObject* parent)
    : QAbstractTableModel(parent),
      list_(list),
      titles_(std::move(titles)),
      ticks_(ticks),
      notes_(notes),
      shownRows_(static_cast<int>(list.count())) {}

int CheckListModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : shownRows_; }

int CheckListModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : qMax(1, static_cast<int>(titles_.size())) + (notes_ ? 1 : 0);
}

QVariant CheckListModel::data(const QModelIndex& index, int role) const {
  const auto row = static_cast<std::size_t>(index.row());
  if (!index.isValid() || row >= list_.count()) return {};
  if (notes_ && index.column() == columnCount() - 1) {
    if (role == Qt::DisplayRole) return toQt(list_.note(row));
    if (role == Qt::FontRole) {
      QFont font;
      font.setItalic(true);
      return font;
    }
    return {};
  }
  if (role == Qt::AccessibleTextRole && notes_ && index.column() == 0 && !list_.note(row).empty())
    return toQt(list_.cell(row, 0) + ", " + list_.note(row));
  if (role == Qt::DisplayRole) return toQt(list_.cell(row, static_cast<std::size_t>(index.column())));
  if (role == Qt::CheckStateRole && ticks_ && index.column() == 0)
    return list_.ticked(row) ? Qt::Checked : Qt::Unchecked;
  return {};
}

QVariant CheckListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section >= titles_.size()) return {};
  return titles_[section];
}

bool CheckListModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (role != Qt::CheckStateRole || !onTick) return false;
  onTick(static_cast<std::size_t>(index.row()), value.toInt() == Qt::Checked);
  return true;
}

Qt::ItemFlags CheckListModel::flags(const QModelIndex& index) const {
  Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
  if (ticks_ && index.column() == 0) flags |= Qt::ItemIsUserCheckable;
  return flags;
}

bool CheckListModel::refresh() {
  const int rows = static_cast<int>(list_.count());
  if (rows == shownRows_) {
    if (rows > 0) emit dataChanged(index(0, 0), index(rows - 1, columnCount() - 1));
    return false;
  }
  beginResetModel();
  shownRows_ = rows;
  endResetModel();
  return true;
}

int GridModel::rowCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : shownRows_; }

int GridModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : shownColumns_; }

QVariant GridModel::data(const QModelIndex& index, int role) const {
  const auto row = static_cast<std::size_t>(index.row()) + 1;
  const auto column = static_cast<std::size_t>(index.column());
  if (!index.isValid() || row >= grid_.rowCount() || column >= grid_.columnCount()) return {};
  switch (role) {
    case Qt::DisplayRole:
    case Qt::ToolTipRole:
      return toQt(grid_.text(row, column));
    case Qt::BackgroundRole:
      if (const std::uint32_t colour = grid_.backColour(row, column); colour != Grid::noColour)
        return shownBackground(colour, QApplication::palette());
      return {};
    case Qt::ForegroundRole: {
      const QPalette palette = QApplication::palette();
      const std::uint32_t ground = grid_.backColour(row, column);
      return readableOn(shownText(grid_.textColour(row, column), palette),
                        ground == Grid::noColour ? palette.color(QPalette::Base) : shownBackground(ground, palette));
    }
    case Qt::FontRole:
      // What a colour says is said without it, too.
      if (grid_.textColour(row, column) != 0) {
        QFont font;
        font.setBold(true);
        return font;
      }
      return {};
    default:
      return {};
  }
}

QVariant GridModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (role != Qt::DisplayRole || orientation != Qt::Horizontal) return {};
  const auto column = static_cast<std::size_t>(section);
  return column < grid_.columnCount() ? toQt(grid_.text(0, column)) : QString();
}

void GridModel::refresh() {
  const int rows = static_cast<int>(grid_.rowCount()) - 1;
  const int columns = static_cast<int>(grid_.columnCount());
  if (rows == shownRows_ && columns == shownColumns_) {
    if (rows > 0 && columns > 0) emit dataChanged(index(0, 0), index(rows - 1, columns - 1));
    if (columns > 0) emit headerDataChanged(Qt::Horizontal, 0, columns - 1);
    return;
  }
  if (columns == shownColumns_ && rows > shownRows_) {
    // Selection and place stay.
    beginInsertRows({}, shownRows_, rows - 1);
    shownRows_ = rows;
    endInsertRows();
    return;
  }
  beginResetModel();
  shownRows_ = rows;
  shownColumns_ = columns;
  endResetModel();
}

bool TipWhereCut::helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                            const QModelIndex& index) {
  const bool cut = index.isValid() && sizeHint(option, index).width() > view->visualRect(index).width();
  if (event->type() != QEvent::ToolTip || !cut) return QStyledItemDelegate::helpEvent(event, view, option, index);
  QToolTip::showText(event->globalPos(), index.data().toString(), view);
  return true;
}

void FramedSelection::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
  QStyleOptionViewItem plain = option;
  plain.state &= ~(QStyle::State_Selected | QStyle::State_HasFocus);
  QStyledItemDelegate::paint(painter, plain, index);
  if (!(option.state & QStyle::State_Selected)) return;
  painter->save();
  painter->setPen(QPen(option.palette.color(QPalette::Highlight), 2));
  painter->drawRect(option.rect.adjusted(1, 1, -1, -1));
  painter->restore();
}

}  // namespace qrel
