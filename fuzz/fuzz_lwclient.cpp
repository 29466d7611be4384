// Text the companion program sends over the bridge.
#include "fuzz/fuzzsupport.h"
#include "radio/lwclient.h"

#include <QWebSocket>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // The client's own socket delivers the message, as if it came off the wire.
    static LwClient *client = new LwClient;
    static QWebSocket *socket = client->findChild<QWebSocket *>();
    if (!socket)
        FuzzSupport::fail("the bridge client has no socket");
    emit socket->textMessageReceived(QString::fromUtf8(FuzzSupport::bytes(data, size)));
    return 0;
}
