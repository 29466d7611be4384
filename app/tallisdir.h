#pragma once

#include <QString>

class QFileDevice;

// The per-user data directory: the home directory followed by "/.tallis".
QString tallisDirPath();

// Makes sure the data directory exists, replacing a plain file of that name,
// and keeps it private to the user (0700): it holds the logbook and keys.
// Called before every file write; reports nothing.
void ensureTallisDir();

// Makes an open file readable and writable by its owner alone (0600). Every
// writer of a file in the data directory calls it right after opening; for a
// QSaveFile it reaches the copy that replaces the file on commit.
void keepPrivate(QFileDevice &file);
