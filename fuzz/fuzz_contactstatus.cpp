// The contact-status file: the user's marks, read at start.
#include "app/contactstatusstore.h"
#include "fuzz/fuzzsupport.h"

namespace {

const QDateTime k_now = QDateTime(QDate(2026, 11, 22), QTime(12, 0), Qt::UTC);

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QString path = FuzzSupport::tallisDirPath() + QStringLiteral("/contact-status.json");
    FuzzSupport::writeFile(path, FuzzSupport::bytes(data, size));
    const auto clock = [] { return k_now; };
    ContactStatusStore store(clock);
    store.load(path);
    if (!store.save())
        FuzzSupport::fail("the marks cannot be saved");

    // Saved marks load back as they were, to the second.
    ContactStatusStore again(clock);
    again.load(path);
    const QDateTime cutOff = k_now.addSecs(-ContactStatusStore::k_retentionSecs);
    for (auto it = store.marks().cbegin(); it != store.marks().cend(); ++it) {
        const ContactStatusStore::Mark mark = again.marks().value(it.key());
        const qint64 drift = mark.time.isValid() ? qAbs(mark.time.msecsTo(it->time)) : -1;
        if (it->time.addSecs(-1) < cutOff && !mark.time.isValid())
            continue; // within a second of expiry: the file keeps whole seconds
        if (mark.status != it->status || drift < 0 || drift >= 1000)
            FuzzSupport::fail("a mark changed when saved and loaded", it.key());
    }
    if (again.marks().size() > store.marks().size())
        FuzzSupport::fail("marks appeared when saved and loaded");
    return 0;
}
