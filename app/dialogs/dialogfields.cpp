#include "app/dialogs/dialogfields.h"

#include <QComboBox>
#include <QDialog>
#include <QDialogButtonBox>
#include <QSpinBox>

namespace DialogFields {

QSpinBox *spinBox(QWidget *parent, int min, int max, int value, const QString &objectName)
{
    auto *spin = new QSpinBox(parent);
    spin->setObjectName(objectName);
    spin->setRange(min, max);
    spin->setValue(value);
    return spin;
}

void addChoices(QComboBox *combo, std::initializer_list<std::pair<const char *, int>> choices)
{
    for (const auto &[text, value] : choices)
        combo->addItem(QString::fromUtf8(text), value);
}

void selectValue(QComboBox *combo, const QVariant &value, const QString &text)
{
    int index = combo->findData(value);
    if (index < 0) {
        combo->addItem(text, value);
        index = combo->count() - 1;
    }
    combo->setCurrentIndex(index);
}

QDialogButtonBox *okCancelButtons(QDialog *dialog)
{
    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, dialog);
    QObject::connect(buttons, &QDialogButtonBox::accepted, dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, dialog, &QDialog::reject);
    return buttons;
}

} // namespace DialogFields
