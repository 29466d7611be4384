#pragma once

#include "app/logexport.h"

#include <QList>
#include <QString>

class QWidget;

// The window's small modal exchanges: the About box, the question before a
// tune without a radio, and the dialogs around an export.
namespace WindowDialogs {

void showAbout(QWidget *parent);
// True when the operator wants to set the radio up now.
bool askToConfigureRadio(QWidget *parent);
// Offers a file for the export, writes it and returns the status-bar notice;
// empty when there was nothing to export, the operator cancelled, or the
// file could not be written (each said in a box of its own).
QString exportLog(QWidget *parent, const ExportFormat &format, const QList<ContactRow> &rows,
                  const QString &text);
// Writes an export's text to path; false after saying in a box that it could not.
bool writeExportFile(QWidget *parent, const QString &path, const QString &text);

} // namespace WindowDialogs
