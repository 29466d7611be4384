#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QList>
#include <QString>

#include <optional>

// One place a logged contact is sent: a program listening on UDP or an
// online logbook. The settings file keeps them in "logTargets"; only the
// keys of its type are read and written.
struct LogTarget
{
    enum class Type { Wsjtx, N1mm, Adif, Wavelog, Qrz };
    static constexpr int k_typeCount = 5;

    Type type = Type::Wsjtx;
    bool enabled = true;
    QString host = QStringLiteral("127.0.0.1"); // UDP types
    quint16 port = 2237;                        // UDP types
    QString message = QStringLiteral("both");   // wsjtx: "both", "adif" or "qso"
    QString url;       // wavelog: the installation, such as https://log.example.org/index.php
    QString key;       // wavelog and qrz; never shown, logged or queued
    QString stationId; // wavelog: the station profile

    // A target of type with its defaults filled in.
    static LogTarget withDefaults(Type type);
    static quint16 defaultPort(Type type);

    // "wsjtx", "n1mm", "adif", "wavelog", "qrz".
    static QString typeName(Type type);
    static std::optional<Type> typeFromName(const QString &name);
    // What the operator reads: "WSJT-X UDP", "N1MM+ UDP", "ADIF UDP", "Wavelog / Cloudlog", "QRZ Logbook".
    static QString typeTitle(Type type);

    bool isUdp() const { return type == Type::Wsjtx || type == Type::N1mm || type == Type::Adif; }
    // Where it goes, without any key or password: "127.0.0.1:2237", the URL, or "logbook.qrz.com".
    QString address() const;

    // Nothing for an element that is not an object of a known type; every
    // other key takes its default when missing or of the wrong type.
    static std::optional<LogTarget> fromJson(const QJsonValue &value);
    QJsonObject toJson() const;
    static QList<LogTarget> listFromJson(const QJsonValue &value);
    static QJsonArray listToJson(const QList<LogTarget> &targets);

    friend bool operator==(const LogTarget &a, const LogTarget &b) { return a.toJson() == b.toJson(); }
    friend bool operator!=(const LogTarget &a, const LogTarget &b) { return !(a == b); }
};
