#include "app/widgets/updatebar.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>

UpdateBar::UpdateBar(QWidget *parent)
    : QFrame(parent)
    , m_message(new QLabel(this))
    , m_dismiss(new QPushButton(this))
{
    setObjectName(QStringLiteral("updateBar"));

    auto *icon = new QLabel(QStringLiteral("★"), this);
    icon->setObjectName(QStringLiteral("updateBarIcon"));

    m_message->setObjectName(QStringLiteral("updateBarLabel"));
    m_message->setTextFormat(Qt::RichText);
    m_message->setOpenExternalLinks(true);
    m_message->setText(
        QStringLiteral("A newer version of Tallis is available.&nbsp;"
                       "<a href=\"%1\" style=\"color:#7fbf7f;\">Download the new version here</a>")
            .arg(QString::fromLatin1(k_downloadUrl)));

    m_dismiss->setObjectName(QStringLiteral("updateBarDismiss"));
    m_dismiss->setText(QStringLiteral("×"));
    m_dismiss->setToolTip(QStringLiteral("Dismiss"));
    m_dismiss->setFlat(true);
    connect(m_dismiss, &QPushButton::clicked, this, &QWidget::hide);

    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(8, 3, 4, 3);
    layout->addWidget(icon);
    layout->addWidget(m_message, 1);
    layout->addWidget(m_dismiss);
    hide();
}

UpdateBar::~UpdateBar() = default;
