#include "app/widgets/spottable.h"

#include "app/operatorkeys.h"
#include "model/stationmodel.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMenu>

namespace {

// Marks the span of the operator's own input.
class OperatorInput final
{
public:
    OperatorInput(int &depth, bool active)
        : m_depth(depth)
        , m_active(active)
    {
        m_depth += m_active ? 1 : 0;
    }
    ~OperatorInput() { m_depth -= m_active ? 1 : 0; }
    Q_DISABLE_COPY_MOVE(OperatorInput)

private:
    int &m_depth;
    bool m_active;
};

} // namespace

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
    // Tab leaves the table for the next control instead of walking its cells.
    setTabKeyNavigation(false);
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

void SpotTable::selectViewRow(int row, bool byOperator)
{
    const QModelIndex index = model()->index(row, 0);
    const OperatorInput deliberate(m_deliberate, true);
    const OperatorInput input(m_operatorInput, byOperator);
    selectionModel()->select(index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
    scrollTo(index);
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
    if (event->key() == Qt::Key_Slash && event->modifiers() == Qt::NoModifier) {
        emit searchRequested();
        return;
    }
    const OperatorInput deliberate(m_deliberate, true);
    const OperatorInput input(m_operatorInput, true);
    QTableView::keyPressEvent(event);
}

void SpotTable::mousePressEvent(QMouseEvent *event)
{
    const OperatorInput deliberate(m_deliberate, true);
    const OperatorInput input(m_operatorInput, true);
    QTableView::mousePressEvent(event);
}

QItemSelectionModel::SelectionFlags SpotTable::selectionCommand(const QModelIndex &index,
                                                                const QEvent *event) const
{
    // When the selected row leaves the view, Qt moves the current row to a
    // neighbour and would select it: a station the operator never chose.
    if (!event && m_operatorInput == 0)
        return QItemSelectionModel::NoUpdate;
    return QTableView::selectionCommand(index, event);
}

void SpotTable::selectionChanged(const QItemSelection &selected, const QItemSelection &deselected)
{
    QTableView::selectionChanged(selected, deselected);
    emit spotSelectionChanged(m_operatorInput > 0, m_deliberate == 0);
}

void SpotTable::contextMenuEvent(QContextMenuEvent *event)
{
    const QModelIndex index = indexAt(event->pos());
    if (!index.isValid())
        return;
    selectViewRow(index.row(), true); // a right click chooses the row as a left click does
    QMenu menu(this);
    const QAction *respot = menu.addAction(QStringLiteral("Re-spot\u2026"));
    if (menu.exec(event->globalPos()) == respot)
        emit respotRequested();
}
