#pragma once

#include <QTableView>

// The spot table: one whole row selected at a time, fixed starting widths,
// distance and bearing shown only with the operator's position. It leaves
// the operator's letter keys to the window, which would otherwise lose them
// to the table's type-to-search after a click on a row.
class SpotTable final : public QTableView
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SpotTable)

public:
    explicit SpotTable(QAbstractItemModel *model, QWidget *parent = nullptr);
    ~SpotTable() override;

    // The selected row of the view, or -1.
    int selectedRow() const;
    // Selects the whole row, clearing any other, and scrolls to it; byOperator
    // says the operator chose it (a selection that may move the radio).
    void selectViewRow(int row, bool byOperator = false);
    void showDistanceColumns(bool shown);

signals:
    // The selected row changed: by the operator's input, by a call of
    // selectViewRow, or by the model changing under the view (rows filtered
    // away), in which case the model is mid-change and receivers must wait
    // for it to settle before they look.
    void spotSelectionChanged(bool byOperator, bool duringModelChange);
    // "/" pressed: the operator wants the search field.
    void searchRequested();
    // "Re-spot…" chosen on a row's context menu; the row is selected first.
    void respotRequested();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex &index,
                                                         const QEvent *event = nullptr) const override;
    void selectionChanged(const QItemSelection &selected, const QItemSelection &deselected) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    // Above zero while the operator's own input is being handled, and while
    // any selection is being made on purpose.
    int m_operatorInput = 0;
    int m_deliberate = 0;
};
