#pragma once

#include <QFrame>

class QLabel;
class QPushButton;

// The slim notice above the spot table that a newer release exists, with a
// link to the download page. Built hidden; dismissing it only hides it.
class UpdateBar final : public QFrame
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(UpdateBar)

public:
    static constexpr const char *k_downloadUrl = "https://tallis.brightwater.example/download";

    explicit UpdateBar(QWidget *parent = nullptr);
    ~UpdateBar() override;

    QLabel *messageLabel() const { return m_message; }
    QPushButton *dismissButton() const { return m_dismiss; }

private:
    QLabel *m_message;
    QPushButton *m_dismiss;
};
