#pragma once

#include <QString>

// The per-user data directory: the home directory followed by "/.tallis".
QString tallisDirPath();

// Makes sure the data directory exists, replacing a plain file of that name.
// Called before every file write; reports nothing.
void ensureTallisDir();
