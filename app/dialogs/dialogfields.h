#pragma once

#include <QString>
#include <QVariant>

#include <initializer_list>
#include <utility>

class QComboBox;
class QDialogButtonBox;
class QDialog;
class QSpinBox;
class QWidget;

// Small builders the set-up dialogs share.
namespace DialogFields {

QSpinBox *spinBox(QWidget *parent, int min, int max, int value, const QString &objectName);

// Entries as (text, value) pairs.
void addChoices(QComboBox *combo, std::initializer_list<std::pair<const char *, int>> choices);
// Selects the entry holding value; a value none holds is added as an entry of its own,
// so that accepting the dialog keeps it.
void selectValue(QComboBox *combo, const QVariant &value, const QString &text);

// OK and Cancel, wired to accept and reject.
QDialogButtonBox *okCancelButtons(QDialog *dialog);

} // namespace DialogFields
