#pragma once

#include "model/filterstate.h"
#include "model/spotfilterproxymodel.h"
#include "model/stationspot.h"

#include <QList>
#include <QWidget>

class QCheckBox;
class QComboBox;
class QLineEdit;
class QPushButton;

// The row of filter controls above the spot table. It shows a FilterState
// and tells which part of it the user changed; the window keeps the state.
class FilterBar final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(FilterBar)

public:
    using ModeClass = SpotFilterProxyModel::ModeClass;

    explicit FilterBar(QWidget *parent = nullptr);
    ~FilterBar() override;

    // Indexed by StationSpot::Source.
    QPushButton *sourceButton(StationSpot::Source source) const;
    bool isSourceEnabled(StationSpot::Source source) const;
    void setSourceEnabled(StationSpot::Source source, bool on);

    QPushButton *modeButton(ModeClass mode) const { return m_modeButtons.at(mode); }
    bool isModeEnabled(ModeClass mode) const;
    void setModeEnabled(ModeClass mode, bool on);

    // In band-table order.
    const QList<QPushButton *> &bandButtons() const { return m_bandButtons; }

    QComboBox *statusCombo() const { return m_statusCombo; }
    int statusFilterValue() const; // the filter value of the chosen entry
    QLineEdit *searchEdit() const { return m_searchEdit; }
    QPushButton *programsButton() const { return m_programsButton; }
    QCheckBox *autoAtuCheck() const { return m_autoAtuCheck; }

    void setProgramFilterActive(bool active);

    // Shows the state without emitting anything.
    void setState(const FilterState &state);
    // Writes the bar's choices (sources, modes, bands, status, search text) into the state.
    void updateState(FilterState &state) const;

signals:
    void sourcesChanged();
    void modesChanged();
    void bandsChanged();
    void statusChanged(int index);
    void searchTextChanged(const QString &text);
    void programsClicked();
    void hideWorkedChanged();

private:
    QList<QPushButton *> m_sourceButtons; // by StationSpot::Source
    QList<QPushButton *> m_modeButtons;
    QList<QPushButton *> m_bandButtons;
    QComboBox *m_statusCombo;
    QLineEdit *m_searchEdit;
    QPushButton *m_programsButton;
    QCheckBox *m_autoAtuCheck;
    QCheckBox *m_hideWorkedCheck;
};
