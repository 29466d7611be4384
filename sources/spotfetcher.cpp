#include "sources/spotfetcher.h"

#include <QDateTime>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

namespace {

// Retry-After is either whole seconds or an HTTP date; nothing for a header
// that is absent, unreadable or asks for no wait at all.
std::optional<qint64> retryAfterSecs(const QByteArray &header, qint64 nowMs)
{
    const QByteArray text = header.trimmed();
    if (text.isEmpty())
        return std::nullopt;
    bool isNumber = false;
    qint64 secs = text.toLongLong(&isNumber);
    if (!isNumber) {
        // HTTP dates end in "GMT", which the RFC 2822 reader does not take for a zone.
        QString date = QString::fromLatin1(text);
        if (date.endsWith(QLatin1String(" GMT")))
            date.replace(date.size() - 3, 3, QStringLiteral("+0000"));
        const QDateTime until = QDateTime::fromString(date, Qt::RFC2822Date);
        if (!until.isValid())
            return std::nullopt;
        secs = (until.toMSecsSinceEpoch() - nowMs + 999) / 1000;
    }
    if (secs <= 0)
        return std::nullopt;
    return qMin(secs, SpotFetcher::k_maxRetryAfterSecs);
}

int httpStatus(QNetworkReply *reply)
{
    return reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

bool isNotModified(QNetworkReply *reply)
{
    return httpStatus(reply) == 304;
}

} // namespace

SpotFetcher::SpotFetcher(const WebSource &source, QObject *parent, const QUrl &serviceUrl)
    : QObject(parent)
    , m_source(source)
    , m_network(new QNetworkAccessManager(this))
    , m_refreshTimer(new QTimer(this))
    , m_serviceUrl(serviceUrl.isEmpty() ? QUrl(QString::fromLatin1(source.defaultUrl)) : serviceUrl)
    , m_clock([] { return QDateTime::currentMSecsSinceEpoch(); })
{
    registerStationSpotMetaTypes();
    m_refreshTimer->setSingleShot(false);
    connect(m_refreshTimer, &QTimer::timeout, this, &SpotFetcher::fetch);
}

SpotFetcher::~SpotFetcher() = default;

SpotParse SpotFetcher::parseResponse(const QByteArray &body) const
{
    return m_source.parse ? m_source.parse(body) : SpotParse();
}

void SpotFetcher::startAutoRefresh(int seconds)
{
    const bool wasRunning = m_refreshTimer->isActive();
    m_refreshTimer->start(seconds * 1000);
    // The first data should arrive at once, not after a whole interval.
    if (!wasRunning)
        QTimer::singleShot(0, this, &SpotFetcher::fetch);
}

void SpotFetcher::stopAutoRefresh()
{
    m_refreshTimer->stop();
}

bool SpotFetcher::isAutoRefreshing() const
{
    return m_refreshTimer->isActive();
}

int SpotFetcher::refreshIntervalMs() const
{
    return m_refreshTimer->interval();
}

void SpotFetcher::setServiceUrl(const QUrl &url)
{
    m_serviceUrl = url;
    m_validators.clear(); // they belong to the other server
}

void SpotFetcher::setClock(Clock clock)
{
    m_clock = std::move(clock);
}

void SpotFetcher::fetch()
{
    if (!m_source.spotsPath || m_quietUntilMs > m_clock())
        return;
    emit fetchStarted();
    if (!m_source.changePath) {
        requestSpots();
        return;
    }
    // Without a change text the list is asked for anyway.
    requestText(QString::fromLatin1(m_source.changePath), [this](std::optional<QByteArray> answer) {
        const QByteArray change = answer.value_or(QByteArray()).trimmed();
        if (!change.isEmpty() && change == m_lastChange)
            emit spotsReady(m_lastSpots);
        else
            requestSpots([this, change] { m_lastChange = change; });
    });
}

QNetworkReply *SpotFetcher::get(const QString &path)
{
    QUrl url = m_serviceUrl;
    const qsizetype query = path.indexOf(QLatin1Char('?'));
    url.setPath(path.left(query));
    url.setQuery(query < 0 ? QString() : path.mid(query + 1));
    QNetworkRequest request(url);
    request.setHeader(QNetworkRequest::UserAgentHeader, QString::fromLatin1(k_userAgent));
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    if (m_source.timeoutMs > 0)
        request.setTransferTimeout(m_source.timeoutMs);
    const Validators validators = m_validators.value(path);
    if (!validators.etag.isEmpty())
        request.setRawHeader("If-None-Match", validators.etag);
    if (!validators.lastModified.isEmpty())
        request.setRawHeader("If-Modified-Since", validators.lastModified);
    return m_network->get(request);
}

void SpotFetcher::requestSpots(std::function<void()> onFresh)
{
    QNetworkReply *reply = get(QString::fromLatin1(m_source.spotsPath));
    connect(reply, &QNetworkReply::finished, this, [this, reply, onFresh = std::move(onFresh)] {
        if (handleNetworkReply(reply) && onFresh)
            onFresh();
    });
}

void SpotFetcher::requestText(const QString &path, TextHandler done)
{
    QNetworkReply *reply = get(path);
    connect(reply, &QNetworkReply::finished, this, [this, reply, path, done = std::move(done)] {
        reply->deleteLater();
        if (handleRefusal(reply))
            return;
        if (reply->error() != QNetworkReply::NoError) {
            done(std::nullopt);
        } else if (isNotModified(reply)) {
            done(m_validators.value(path).body);
        } else {
            const QByteArray body = reply->readAll();
            remember(path, reply, body);
            done(body);
        }
    });
}

bool SpotFetcher::handleNetworkReply(QNetworkReply *reply)
{
    reply->deleteLater();
    if (handleRefusal(reply))
        return false;
    if (reply->error() != QNetworkReply::NoError) {
        emit fetchError(reply->errorString());
        return false;
    }
    // Nothing changed since the last answer: that batch is still the news.
    if (isNotModified(reply)) {
        emit spotsReady(m_lastSpots);
        return true;
    }
    const QString path = QString::fromLatin1(m_source.spotsPath); // the key get() looked up
    const SpotParse parsed = parseResponse(reply->readAll());
    const bool fresh = parsed.error.isEmpty();
    if (fresh) {
        remember(path, reply, QByteArray());
        m_lastSpots = parsed.spots;
    } else {
        m_validators.remove(path); // a faulty answer must be fetched whole again
        emit fetchError(parsed.error);
    }
    // A large answer is parsed in this turn of the event loop and handed on
    // in the next, so the window answers between parsing and merging it.
    QMetaObject::invokeMethod(
        this, [this, spots = parsed.spots] { emit spotsReady(spots); }, Qt::QueuedConnection);
    return fresh;
}

void SpotFetcher::remember(const QString &path, QNetworkReply *reply, const QByteArray &body)
{
    Validators validators{reply->rawHeader("ETag"), reply->rawHeader("Last-Modified"), body};
    if (validators.etag.isEmpty() && validators.lastModified.isEmpty())
        m_validators.remove(path);
    else
        m_validators.insert(path, validators);
}

bool SpotFetcher::handleRefusal(QNetworkReply *reply)
{
    const int status = httpStatus(reply);
    if (status != 429 && status != 503)
        return false;
    const qint64 now = m_clock();
    const std::optional<qint64> wait = retryAfterSecs(reply->rawHeader("Retry-After"), now);
    if (!wait)
        return false;
    const bool wasQuiet = m_quietUntilMs > now;
    m_quietUntilMs = qMax(m_quietUntilMs, now + *wait * 1000);
    emit fetchError(reply->errorString());
    if (!wasQuiet)
        emit notice(waitNotice());
    return true;
}

QString SpotFetcher::waitNotice() const
{
    const QString until =
        QDateTime::fromMSecsSinceEpoch(m_quietUntilMs).toLocalTime().toString(QStringLiteral("HH:mm:ss"));
    return QStringLiteral("The %1 oracle begs a respite \u2014 we leave it in peace until %2.")
        .arg(sourceName(), until);
}
