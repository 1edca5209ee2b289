// Qt's view of the control models that have rows: nothing is copied, so that a million rows cost nothing.
#pragma once

#include <QAbstractTableModel>
#include <QStringList>
#include <QStyledItemDelegate>
#include <functional>

#include "platform/controls/control.h"
#include "platform/controls/grid.h"

namespace qrel {

// The rows of a CheckList, with a check box in the first column when `ticks` is set and its notes as the last column
// when `notes` is.
class CheckListModel : public QAbstractTableModel {
 public:
  CheckListModel(CheckList& list, QStringList titles, bool ticks, bool notes, QObject* parent);
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;

  std::function<void(std::size_t row, bool ticked)> onTick;  // a person's click on a check box
  // The list has changed; true when it has other rows than before, and so was told anew.
  bool refresh();

 private:
  CheckList& list_;
  QStringList titles_;
  bool ticks_, notes_;
  int shownRows_ = 0;
};

// The rows of a Grid below its header row: row 0 here is row 1 there.
class GridModel : public QAbstractTableModel {
 public:
  GridModel(Grid& grid, QObject* parent) : QAbstractTableModel(parent), grid_(grid) {}
  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  void refresh();

 private:
  Grid& grid_;
  int shownRows_ = 0;
  int shownColumns_ = 0;
};

// Shows a row's whole text as its tip where the column cuts it off; elsewhere the list's own tip comes up.
class TipWhereCut : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;
  bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                 const QModelIndex& index) override;
};

// Paints a selected cell with a frame, so that its colours stay to be seen.
class FramedSelection : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;
  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
};

}  // namespace qrel
