#pragma once

#include "model/stationspot.h"

#include <QFrame>

class QLabel;
class QPushButton;
class RadioPanel;

// The panel beside the table: the selected spot's details, the radio
// read-out and the action buttons.
class DetailPanel final : public QFrame
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DetailPanel)

public:
    explicit DetailPanel(QWidget *parent = nullptr);
    ~DetailPanel() override;

    // multiOp: the other operators at the reference, empty for none.
    void showSpot(const StationSpot &spot, const QString &multiOp);
    void clear();
    void setActionsEnabled(bool enabled);
    // What the operator's own log says of the selected spot.
    void showWorked(const QString &text);
    // While no call sign is set, the empty panel greets a new operator and
    // offers the two dialogs that get a station going.
    void showWelcome(bool welcome);

    RadioPanel *radioPanel() const { return m_radioPanel; }
    QPushButton *tuneButton() const { return m_tuneButton; }
    QPushButton *heardButton() const { return m_heardButton; }
    QPushButton *unheardButton() const { return m_unheardButton; }
    QPushButton *addToLogButton() const { return m_addToLogButton; }
    QPushButton *spotButton() const { return m_spotButton; }

signals:
    void preferencesRequested();
    void radioSetupRequested();

private:
    QWidget *buildDetails();
    QWidget *buildWelcome();
    void showDetailsOrWelcome();

    QLabel *m_callsign;
    QLabel *m_reference;
    QLabel *m_referenceName;
    QLabel *m_continent; // the call's country and continent
    QLabel *m_frequency;
    QLabel *m_mode;
    QLabel *m_time;
    QLabel *m_spotter;
    QLabel *m_comments;
    QLabel *m_multiop;
    QLabel *m_worked;
    QWidget *m_details;
    QWidget *m_welcome;
    bool m_welcomeWanted = false;
    bool m_showingSpot = false;
    RadioPanel *m_radioPanel;
    QPushButton *m_tuneButton;
    QPushButton *m_heardButton;
    QPushButton *m_unheardButton;
    QPushButton *m_addToLogButton;
    QPushButton *m_spotButton;
};
