#pragma once

#include "api/apijson.h"

#include <QByteArray>
#include <QHash>
#include <QJsonObject>
#include <QString>

// A command handler: reads its arguments from the request's "data", calls the
// program, and returns the reply's "data" as compact JSON. A bad request is
// reported by throwing a QString, which becomes the error reply's text. A
// command that waits for something else returns a null QByteArray and answers
// through the context's late reply.
using ApiCommand = QByteArray (*)(const ApiContext &context, const QJsonObject &data);

// Command name ("status.get", "radio.frequency.set", ...) to handler.
QHash<QString, ApiCommand> apiCommandTable();
