#include "app/dialogs/programsdialog.h"

#include "app/dialogs/dialogfields.h"

#include <QDialogButtonBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

void setAllChecked(QListWidget *list, Qt::CheckState state)
{
    for (int i = 0; i < list->count(); ++i)
        list->item(i)->setCheckState(state);
}

QStringList checkedTexts(const QListWidget *list)
{
    QStringList texts;
    for (int i = 0; i < list->count(); ++i) {
        if (list->item(i)->checkState() == Qt::Checked)
            texts.append(list->item(i)->text());
    }
    return texts;
}

} // namespace

ProgramsDialog::ProgramsDialog(const ProgramSelection &present, const ProgramSelection &selected,
                               QWidget *parent)
    : QDialog(parent)
{
    setWindowTitle(QStringLiteral("Programs & Associations — Tallis"));
    auto *lists = new QHBoxLayout;
    lists->addWidget(buildCheckList(QStringLiteral("POTA Programs"), QStringLiteral("potaProgramsList"),
                                    present.potaPrograms, selected.potaPrograms, m_pota));
    lists->addWidget(buildCheckList(QStringLiteral("SOTA Associations"),
                                    QStringLiteral("sotaAssociationsList"), present.sotaAssociations,
                                    selected.sotaAssociations, m_sota));
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(lists);
    layout->addWidget(DialogFields::okCancelButtons(this));
}

ProgramsDialog::~ProgramsDialog() = default;

QWidget *ProgramsDialog::buildCheckList(const QString &title, const QString &objectName, QStringList prefixes,
                                        const QStringList &ticked, QListWidget *&list)
{
    for (const QString &prefix : ticked) {
        if (!prefixes.contains(prefix))
            prefixes.append(prefix);
    }
    prefixes.sort();

    auto *group = new QGroupBox(title, this);
    list = new QListWidget(group);
    list->setObjectName(objectName);
    for (const QString &prefix : std::as_const(prefixes)) {
        auto *item = new QListWidgetItem(prefix, list);
        item->setFlags(item->flags() | Qt::ItemIsUserCheckable);
        item->setCheckState(ticked.contains(prefix) ? Qt::Checked : Qt::Unchecked);
    }
    auto *all = new QPushButton(QStringLiteral("All"), group);
    auto *none = new QPushButton(QStringLiteral("None"), group);
    all->setAutoDefault(false);
    none->setAutoDefault(false);
    QListWidget *target = list;
    connect(all, &QPushButton::clicked, this, [target] { setAllChecked(target, Qt::Checked); });
    connect(none, &QPushButton::clicked, this, [target] { setAllChecked(target, Qt::Unchecked); });

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(all);
    buttons->addWidget(none);
    buttons->addStretch(1);
    auto *layout = new QVBoxLayout(group);
    layout->addWidget(list);
    layout->addLayout(buttons);
    return group;
}

ProgramSelection ProgramsDialog::selection() const
{
    return {checkedTexts(m_pota), checkedTexts(m_sota)};
}
