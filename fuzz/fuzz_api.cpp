// A message from a client of the local WebSocket API, handled by the real
// server and command table against a fake program.
#include "api/wsserver.h"
#include "fuzz/fuzzsupport.h"
#include "support/fakeapibackend.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QHostAddress>
#include <QJsonDocument>
#include <QJsonObject>
#include <QWebSocket>

namespace {

constexpr int k_waitMs = 5000;

struct Session
{
    FakeApiBackend backend;
    WsServer server{&backend};
    QWebSocket client;
    QWebSocket *serverSide = nullptr; // the server's socket for this client
    int greetings = 0;
    int replies = 0;
    QJsonObject lastReply;

    Session()
    {
        StationSpot spot;
        spot.callsign = QStringLiteral("K1\"ABC\\");
        spot.reference = QStringLiteral("US-0001");
        spot.frequencyKhz = 14062.5;
        spot.comments = QStringLiteral("tab\tnew\nline \u0001 \U0001F600");
        backend.visible = {spot};
        backend.all = {spot, spot};
        if (!server.listen(0, QStringLiteral("127.0.0.1")))
            FuzzSupport::fail("cannot listen on 127.0.0.1");
        QObject::connect(&client, &QWebSocket::textMessageReceived, &client, [this](const QString &text) {
            FuzzSupport::requireValidJson(text.toUtf8(), "the server sent a message that is not JSON");
            const QJsonObject message = QJsonDocument::fromJson(text.toUtf8()).object();
            const QString type = message.value(QLatin1String("type")).toString();
            if (type == QLatin1String("reply")) {
                ++replies;
                lastReply = message;
            } else if (message.value(QLatin1String("event")).toString() == QLatin1String("hello")) {
                ++greetings;
            }
        });
        client.open(QUrl(QStringLiteral("ws://127.0.0.1:%1").arg(server.port())));
        waitFor([this] { return greetings > 0; }); // "hello"
        serverSide = server.findChild<QWebSocket *>(QString(), Qt::FindDirectChildrenOnly);
        if (!serverSide)
            FuzzSupport::fail("the server keeps no socket for its client");
    }

    template <typename Done>
    void waitFor(Done done)
    {
        const QDeadlineTimer deadline(k_waitMs);
        while (!done()) {
            if (deadline.hasExpired())
                FuzzSupport::fail("the server did not answer in time");
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
        }
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static Session *session = new Session;
    const QString message = QString::fromUtf8(FuzzSupport::bytes(data, size));
    session->backend.calls.clear();

    // The server's socket delivers the message as if it had come off the wire;
    // every message has exactly one answer, which names the message's id.
    const int before = session->replies;
    emit session->serverSide->textMessageReceived(message);
    session->waitFor([before] { return session->replies > before; });
    if (session->replies != before + 1)
        FuzzSupport::fail("one message had several replies");
    // An id that UTF-8 can carry comes back as it was sent.
    const QString id =
        QJsonDocument::fromJson(message.toUtf8()).object().value(QLatin1String("id")).toString();
    const QString replyId = session->lastReply.value(QLatin1String("id")).toString();
    if (QString::fromUtf8(id.toUtf8()) == id && replyId != id)
        FuzzSupport::fail("a reply lost its id", replyId);
    return 0;
}
