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
    // Selects the whole row, clearing any other, and scrolls to it.
    void selectViewRow(int row);
    // The next (step 1) or previous (step -1) row, clamped; with nothing
    // selected the first or the last. False on an empty view.
    bool stepSelection(int step);
    void showDistanceColumns(bool shown);

signals:
    // "Re-spot…" chosen on a row's context menu; the row is selected first.
    void respotRequested();

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
};
