#include "app/widgets/spottable.h"

#include "app/operatorkeys.h"
#include "model/stationmodel.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>

SpotTable::SpotTable(QAbstractItemModel *model, QWidget *parent)
    : QTableView(parent)
{
    setObjectName(QStringLiteral("spotTable"));
    setModel(model);
    setSortingEnabled(true);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setAlternatingRowColors(true);
    setWordWrap(false);
    verticalHeader()->hide();
    verticalHeader()->setDefaultSectionSize(22);
    // Fixed starting widths: fitting columns to their contents would measure
    // every row after every merge. The park or summit name takes the slack.
    static constexpr int k_columnWidths[StationModel::ColumnCount] = {70, 100, 110, 0,  95,
                                                                      60, 75,  85,  75, 70};
    for (int column = 0; column < StationModel::ColumnCount; ++column)
        horizontalHeader()->resizeSection(column, k_columnWidths[column]);
    horizontalHeader()->setSectionResizeMode(StationModel::NameColumn, QHeaderView::Stretch);
    sortByColumn(StationModel::AgeColumn, Qt::DescendingOrder);
    showDistanceColumns(false);
}

SpotTable::~SpotTable() = default;

int SpotTable::selectedRow() const
{
    const QModelIndexList rows = selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.first().row();
}

void SpotTable::selectViewRow(int row)
{
    const QModelIndex index = model()->index(row, 0);
    selectionModel()->select(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
    scrollTo(index);
}

bool SpotTable::stepSelection(int step)
{
    const int rows = model()->rowCount();
    if (rows == 0)
        return false;
    const int current = selectedRow();
    if (current < 0)
        selectViewRow(step > 0 ? 0 : rows - 1);
    else
        selectViewRow(qBound(0, current + step, rows - 1));
    return true;
}

void SpotTable::showDistanceColumns(bool shown)
{
    // Distance and bearing mean nothing until the operator's position is known.
    setColumnHidden(StationModel::DistanceColumn, !shown);
    setColumnHidden(StationModel::BearingColumn, !shown);
}

void SpotTable::keyPressEvent(QKeyEvent *event)
{
    // Unhandled here, the key goes on to the window.
    if (operatorKeyFor(event->key(), event->modifiers())) {
        event->ignore();
        return;
    }
    QTableView::keyPressEvent(event);
}

void SpotTable::contextMenuEvent(QContextMenuEvent *event)
{
    const QModelIndex index = indexAt(event->pos());
    if (!index.isValid())
        return;
    selectViewRow(index.row());
    QMenu menu(this);
    const QAction *respot = menu.addAction(QStringLiteral("Re-spot\u2026"));
    if (menu.exec(event->globalPos()) == respot)
        emit respotRequested();
}
