#pragma once

#include "app/spotting/spotrequest.h"

#include <QDialog>
#include <QStringList>

#include <functional>

class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QPushButton;

// "Spot a Station": the operator's confirmation of one spot. Prefilled from
// the selected spot (or empty), it says where the spot goes, refuses what the
// checks refuse, asks before repeating a recent spot, and accepts on Post
// (Enter); Escape cancels. The window posts the accepted request.
class SpotDialog final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SpotDialog)

public:
    struct Checks
    {
        std::function<QString(const SpotRequest &)> problem; // empty when it may go
        std::function<bool(const SpotRequest &)> isRepeat;
        // "Spot %1 again?"; true to post all the same.
        std::function<bool(const QString &question)> askAgain;
    };

    // nodes: the cluster nodes logged in ("host:port"); callsignSet: whether the operator's
    // own call sign is known (without it nothing can be posted).
    SpotDialog(const SpotRequest &prefill, const QStringList &nodes, bool callsignSet, Checks checks,
               QWidget *parent = nullptr);
    ~SpotDialog() override;

    SpotRequest request() const;

private:
    void buildFields(const SpotRequest &prefill, const QStringList &nodes);
    void onTargetChanged();
    void onPost();

    SpotRequest m_prefill;
    Checks m_checks;
    QLineEdit *m_callsign;
    QDoubleSpinBox *m_frequency;
    QComboBox *m_mode;
    QLineEdit *m_reference;
    QComboBox *m_target;
    QComboBox *m_node;
    QLineEdit *m_comment;
    QCheckBox *m_qrt;
    QFormLayout *m_form = nullptr;
    QLabel *m_note;
    QLabel *m_error;
    QPushButton *m_post;
};
