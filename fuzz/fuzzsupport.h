#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <cstddef>
#include <cstdint>

// What every harness shares. The process gets a core application and a HOME
// of its own in a fresh temporary directory before the first input (libFuzzer
// calls LLVMFuzzerInitialize, defined with these helpers); Qt's warnings about
// the garbage it is fed are silenced, a fatal message still aborts.
namespace FuzzSupport {

inline QByteArray bytes(const uint8_t *data, size_t size)
{
    return QByteArray(reinterpret_cast<const char *>(data), qsizetype(size));
}

// The temporary home directory, and the program's directory inside it.
QString homePath();
QString tallisDirPath();

// Replaces the file at path with exactly these bytes.
void writeFile(const QString &path, QByteArrayView contents);

// Runs whatever the event loop has ready, without waiting for more.
void processEvents();

// Reports a broken property of the code under test and aborts, which
// libFuzzer records as a crash with this input.
[[noreturn]] void fail(const char *what, const QString &detail = QString());

// Aborts unless json is one well-formed JSON object or array.
void requireValidJson(QByteArrayView json, const char *what);

} // namespace FuzzSupport
