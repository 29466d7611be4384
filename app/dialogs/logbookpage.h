#pragma once

#include "app/logbook/logtarget.h"

#include <QList>
#include <QWidget>

class QComboBox;
class QFormLayout;
class QLineEdit;
class QListWidget;
class QPushButton;
class QSpinBox;

// The preferences' "Logbook" page: the programs and online logbooks each
// logged contact is sent to. Targets are added by type with that type's
// defaults, ticked on or off in the list, edited below it and removed.
class LogbookPage final : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LogbookPage)

public:
    explicit LogbookPage(const QList<LogTarget> &targets, QWidget *parent = nullptr);
    ~LogbookPage() override;

    QList<LogTarget> targets() const { return m_targets; }

private:
    QWidget *buildEditor();
    void addTarget();
    void removeTarget();
    void showTarget(int row);
    void storeEditor();
    void refreshItem(int row);

    QList<LogTarget> m_targets;
    QListWidget *m_list;
    QComboBox *m_addType;
    QPushButton *m_remove;
    QFormLayout *m_form = nullptr;
    QLineEdit *m_host = nullptr;
    QSpinBox *m_port = nullptr;
    QComboBox *m_message = nullptr;
    QLineEdit *m_url = nullptr;
    QLineEdit *m_key = nullptr;
    QLineEdit *m_stationId = nullptr;
    int m_editing = -1;
    bool m_loading = false;
};
