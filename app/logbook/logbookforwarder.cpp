#include "app/logbook/logbookforwarder.h"

#include "app/logbook/adifudpsender.h"
#include "app/logbook/n1mmsender.h"
#include "app/logbook/qrzsender.h"
#include "app/logbook/wavelogsender.h"
#include "app/logbook/wsjtxsender.h"
#include "buildinfo.h"

#include <QHostInfo>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QRegularExpression>
#include <QStringList>
#include <QTimer>
#include <QUdpSocket>
#include <QUuid>

#include <algorithm>
#include <utility>

namespace {

constexpr int k_firstRetrySecs = 30;
constexpr int k_lastRetrySecs = 30 * 60;

// The worked call of an ADIF record, for the operator's notice.
QString callOf(const QString &adifRecord)
{
    static const QRegularExpression field(QStringLiteral("<CALL:(\\d+)>"),
                                          QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch match = field.match(adifRecord);
    return match.hasMatch() ? adifRecord.mid(match.capturedEnd(), match.captured(1).toInt()) : QString();
}

QString clockText(const QDateTime &at)
{
    return at.toLocalTime().toString(QStringLiteral("HH:mm"));
}

} // namespace

LogbookForwarder::LogbookForwarder(QString outboxPath, QObject *parent)
    : QObject(parent)
    , m_outbox(std::move(outboxPath))
    , m_udp(new QUdpSocket(this))
    , m_network(new QNetworkAccessManager(this))
    , m_retryTimer(new QTimer(this))
    , m_clock([] { return QDateTime::currentDateTimeUtc(); })
    , m_qrzUrl(QrzSender::defaultApiUrl())
{
    m_outbox.load();
    m_retryTimer->setSingleShot(true);
    connect(m_retryTimer, &QTimer::timeout, this, &LogbookForwarder::deliverDue);
}

LogbookForwarder::~LogbookForwarder()
{
    // Posts still in flight are abandoned; their records stay in the outbox for the next run.
    const QList<QNetworkReply *> replies = m_network->findChildren<QNetworkReply *>();
    for (QNetworkReply *reply : replies)
        reply->disconnect(this);
}

void LogbookForwarder::setClock(Clock clock)
{
    m_clock = clock ? std::move(clock) : Clock([] { return QDateTime::currentDateTimeUtc(); });
}

int LogbookForwarder::retryDelaySecs(int failures)
{
    int secs = k_firstRetrySecs;
    for (int i = 1; i < failures && secs < k_lastRetrySecs; ++i)
        secs *= 2;
    return std::min(secs, k_lastRetrySecs);
}

void LogbookForwarder::configure(const QList<LogTarget> &targets, const AdifStation &station)
{
    QList<TargetState> states;
    for (int i = 0; i < targets.size(); ++i)
        states.append(i < m_targets.size() && m_targets[i] == targets[i] ? m_states[i] : TargetState{});
    m_targets = targets;
    m_states = states;
    m_station = station;
    m_configured = true;
    deliverDue();
    publish();
}

void LogbookForwarder::forward(const QList<ContactRecord> &records)
{
    for (const ContactRecord &record : records) {
        for (int i = 0; i < m_targets.size(); ++i) {
            if (!m_targets[i].enabled)
                continue;
            if (m_targets[i].isUdp())
                sendUdp(i, record);
            else
                queue(i, record);
        }
    }
    deliverDue();
    publish();
}

void LogbookForwarder::sendUdp(int index, const ContactRecord &record)
{
    const LogTarget &target = m_targets[index];
    QList<QByteArray> datagrams;
    if (target.type == LogTarget::Type::Wsjtx) {
        const QString adif =
            AdifWriter::document({record}, m_station, now(), QString::fromLatin1(BuildInfo::k_version));
        datagrams = WsjtxSender::datagrams(target.message, record, m_station, adif);
    } else if (target.type == LogTarget::Type::N1mm) {
        datagrams = {N1mmSender::contactInfo(record, m_station)};
    } else {
        datagrams = {AdifUdpSender::datagram(record, m_station)};
    }
    QHostAddress address(target.host);
    if (target.host.compare(QLatin1String("localhost"), Qt::CaseInsensitive) == 0)
        address = QHostAddress(QHostAddress::LocalHost);
    if (!address.isNull())
        return writeDatagrams(index, address, datagrams);
    // A name is looked up without waiting; the answer sends, if the target is still the same.
    const LogTarget sent = target;
    QHostInfo::lookupHost(target.host, this, [this, index, sent, datagrams](const QHostInfo &info) {
        if (index >= m_targets.size() || m_targets[index] != sent)
            return;
        if (info.addresses().isEmpty()) {
            setOutcome(index, QStringLiteral("send failed: %1 not found").arg(sent.host));
            emit notice(QStringLiteral("Logbook: %1 not found").arg(sent.host));
            return publish();
        }
        writeDatagrams(index, info.addresses().constFirst(), datagrams);
        publish();
    });
}

void LogbookForwarder::writeDatagrams(int index, const QHostAddress &address,
                                      const QList<QByteArray> &datagrams)
{
    const LogTarget &target = m_targets[index];
    for (const QByteArray &datagram : datagrams) {
        if (m_udp->writeDatagram(datagram, address, target.port) < 0) {
            const QString error = m_udp->errorString();
            setOutcome(index, QStringLiteral("send failed: %1").arg(error));
            emit notice(QStringLiteral("Logbook: could not send to %1 (%2): %3")
                            .arg(LogTarget::typeTitle(target.type), target.address(), error));
            return;
        }
    }
    setOutcome(index, QStringLiteral("sent at %1").arg(clockText(now())));
}

void LogbookForwarder::queue(int index, const ContactRecord &record)
{
    OutboxEntry entry;
    entry.id = QUuid::createUuid().toString(QUuid::WithoutBraces);
    entry.targetIndex = index;
    entry.targetType = m_targets[index].type;
    entry.record = AdifWriter::record(record, m_station);
    entry.created = now();
    m_outbox.add(entry);
}

bool LogbookForwarder::targetFits(const OutboxEntry &entry) const
{
    return entry.targetIndex < m_targets.size() && m_targets[entry.targetIndex].type == entry.targetType;
}

void LogbookForwarder::deliverDue()
{
    if (!m_configured)
        return;
    const QDateTime at = now();
    const QList<OutboxEntry> pending = m_outbox.pending();
    for (const OutboxEntry &entry : pending) {
        const int index = entry.targetIndex;
        if (!targetFits(entry)) {
            settle(-1, entry,
                   DeliveryOutcome::refused(QStringLiteral("logbook %1 (%2) is no longer in the settings")
                                                .arg(index + 1)
                                                .arg(LogTarget::typeTitle(entry.targetType))));
            continue;
        }
        const TargetState &state = m_states[index];
        if (!m_targets[index].enabled || m_busy.contains(index) ||
            (state.nextAttempt.isValid() && state.nextAttempt > at))
            continue;
        post(index, entry);
    }
    scheduleRetry();
    publish();
}

void LogbookForwarder::post(int index, const OutboxEntry &entry)
{
    const LogTarget &target = m_targets[index];
    HttpPost http = target.type == LogTarget::Type::Qrz ? QrzSender::post(m_qrzUrl, target, entry.record)
                                                        : WavelogSender::post(target, entry.record);
    http.request.setTransferTimeout(m_httpTimeoutMs);
    m_busy.insert(index);
    QNetworkReply *reply = m_network->post(http.request, http.body);
    connect(reply, &QNetworkReply::finished, this,
            [this, index, entry, reply] { onReply(index, entry, reply); });
}

void LogbookForwarder::onReply(int index, const OutboxEntry &entry, QNetworkReply *reply)
{
    reply->deleteLater();
    m_busy.remove(index);
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    const QByteArray body = reply->readAll();
    const QString error = reply->error() == QNetworkReply::NoError ? QString() : reply->errorString();
    const DeliveryOutcome outcome = entry.targetType == LogTarget::Type::Qrz
                                        ? QrzSender::outcome(status, body, error)
                                        : WavelogSender::outcome(status, body, error);
    settle(targetFits(entry) ? index : -1, entry, outcome);
    deliverDue();
}

void LogbookForwarder::settle(int index, const OutboxEntry &entry, const DeliveryOutcome &outcome)
{
    const QString secret = index >= 0 ? m_targets[index].key : QString();
    const QString reason = LogDelivery::cleanReason(outcome.reason, secret);
    const QString title =
        index >= 0 ? LogTarget::typeTitle(m_targets[index].type) : QStringLiteral("Logbook");
    TargetState dummy;
    TargetState &state = index >= 0 ? m_states[index] : dummy;
    switch (outcome.kind) {
    case DeliveryOutcome::Kind::Delivered:
        m_outbox.settleDelivered(entry.id);
        state.failures = 0;
        state.nextAttempt = QDateTime();
        state.lastOutcome = reason.isEmpty() ? QStringLiteral("delivered at %1").arg(clockText(now()))
                                             : QStringLiteral("already in the log (%1)").arg(reason);
        break;
    case DeliveryOutcome::Kind::Refused:
        m_outbox.settleRefused(entry.id, reason);
        state.failures = 0;
        state.nextAttempt = QDateTime();
        state.lastOutcome = QStringLiteral("refused: %1").arg(reason);
        emit notice(QStringLiteral("Logbook: %1 refused the contact with %2: %3")
                        .arg(title, callOf(entry.record), reason));
        break;
    case DeliveryOutcome::Kind::Retry:
        ++state.failures;
        state.nextAttempt = now().addSecs(retryDelaySecs(state.failures));
        state.lastOutcome =
            QStringLiteral("%1; trying again at %2").arg(reason, clockText(state.nextAttempt));
        break;
    }
}

void LogbookForwarder::scheduleRetry()
{
    QDateTime next;
    for (const OutboxEntry &entry : m_outbox.pending()) {
        if (!targetFits(entry) || m_busy.contains(entry.targetIndex) || !m_targets[entry.targetIndex].enabled)
            continue;
        const QDateTime at = m_states[entry.targetIndex].nextAttempt;
        if (at.isValid() && (!next.isValid() || at < next))
            next = at;
    }
    if (!next.isValid())
        return m_retryTimer->stop();
    m_retryTimer->start(int(std::clamp<qint64>(now().msecsTo(next), 0, qint64(k_lastRetrySecs) * 1000)));
}

void LogbookForwarder::setOutcome(int index, const QString &outcome)
{
    if (index >= 0 && index < m_states.size())
        m_states[index].lastOutcome = outcome;
}

QString LogbookForwarder::statusText() const
{
    const int waiting = waitingCount();
    return waiting > 0 ? QStringLiteral("Logbook: %1 waiting").arg(waiting) : QString();
}

QString LogbookForwarder::statusToolTip() const
{
    QList<int> waiting(m_targets.size(), 0);
    for (const OutboxEntry &entry : m_outbox.pending()) {
        if (targetFits(entry))
            ++waiting[entry.targetIndex];
    }
    QStringList lines;
    for (int i = 0; i < m_targets.size(); ++i) {
        const LogTarget &target = m_targets[i];
        QString line = QStringLiteral("%1. %2, %3: ")
                           .arg(i + 1)
                           .arg(LogTarget::typeTitle(target.type), target.address());
        line += !target.enabled                     ? QStringLiteral("off")
                : m_states[i].lastOutcome.isEmpty() ? QStringLiteral("nothing sent yet")
                                                    : m_states[i].lastOutcome;
        if (waiting[i] > 0)
            line += QStringLiteral(" (%1 waiting)").arg(waiting[i]);
        lines.append(line);
    }
    return lines.isEmpty() ? QStringLiteral("No logbook set up (Preferences, Logbook)")
                           : lines.join(QLatin1Char('\n'));
}

void LogbookForwarder::publish()
{
    const QString text = statusText();
    const QString toolTip = statusToolTip();
    if (text == m_shownText && toolTip == m_shownToolTip)
        return;
    m_shownText = text;
    m_shownToolTip = toolTip;
    emit statusChanged(text, toolTip);
}
