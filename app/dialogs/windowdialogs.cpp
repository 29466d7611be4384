#include "app/dialogs/windowdialogs.h"

#include "buildinfo.h"

#include <QDateTime>
#include <QDir>
#include <QFileDialog>
#include <QLocale>
#include <QMessageBox>
#include <QPixmap>

namespace WindowDialogs {

void showAbout(QWidget *parent)
{
    const QDateTime built = QDateTime::fromSecsSinceEpoch(BuildInfo::k_buildTime, Qt::UTC);
    QMessageBox box(parent);
    box.setWindowTitle(QStringLiteral("About Tallis"));
    box.setIconPixmap(
        QPixmap(QStringLiteral(":/logo.jpg")).scaled(96, 96, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    box.setTextFormat(Qt::RichText);
    box.setText(QStringLiteral("<p align=\"center\">Version %1<br>Built: %2<br>Release: %3</p>")
                    .arg(QString::fromLatin1(BuildInfo::k_version),
                         built.toString(QStringLiteral("yyyy-MM-dd HH:mm 'UTC'")),
                         QLocale::c().toString(built.date(), QStringLiteral("MMM d yyyy"))));
    box.exec();
}

bool askToConfigureRadio(QWidget *parent)
{
    return QMessageBox::question(parent, QStringLiteral("Radio Not Connected"),
                                 QStringLiteral("The radio has not yet been graced with a connection.\n"
                                                "Would you care to configure it now?"),
                                 QMessageBox::Yes | QMessageBox::No) == QMessageBox::Yes;
}

QString exportLog(QWidget *parent, const ExportFormat &format, const QList<ContactRow> &rows,
                  const QString &text)
{
    if (rows.isEmpty()) {
        QMessageBox::information(parent, format.title, format.nothingToExport);
        return QString();
    }
    const QString path = QFileDialog::getSaveFileName(
        parent, format.title, QDir::homePath() + QLatin1Char('/') + format.proposedFileName,
        format.fileFilter);
    if (path.isEmpty())
        return QString();
    if (!writeExportFile(parent, path, text))
        return QString();
    return format.exported.arg(rows.size()).arg(path);
}

bool writeExportFile(QWidget *parent, const QString &path, const QString &text)
{
    if (LogExport::writeTextFile(path, text))
        return true;
    QMessageBox::warning(parent, QStringLiteral("Export Failed"),
                         QStringLiteral("Could not open file for writing:\n%1").arg(path));
    return false;
}

} // namespace WindowDialogs
