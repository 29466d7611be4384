#include "app/spotting/webspotposter.h"

#include "sources/spotfetcher.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

#include <utility>

namespace {

constexpr int k_maxRefusalChars = 200;

QString messageOf(const QJsonValue &value)
{
    if (value.isString())
        return value.toString();
    if (value.isArray())
        return messageOf(value.toArray().first());
    if (value.isObject()) {
        const QJsonObject object = value.toObject();
        for (const char *key : {"msg", "message"}) {
            if (object.value(QLatin1String(key)).isString())
                return object.value(QLatin1String(key)).toString();
        }
    }
    return QString();
}

} // namespace

WebSpotPoster::WebSpotPoster(QString serviceName, QUrl url, QNetworkAccessManager *network, QObject *parent)
    : QObject(parent)
    , m_serviceName(std::move(serviceName))
    , m_url(std::move(url))
    , m_network(network)
{}

WebSpotPoster::~WebSpotPoster() = default;

void WebSpotPoster::post(const QByteArray &jsonBody, Done done)
{
    QNetworkRequest request(m_url);
    request.setHeader(QNetworkRequest::UserAgentHeader, QString::fromLatin1(SpotFetcher::k_userAgent));
    request.setHeader(QNetworkRequest::ContentTypeHeader, QByteArrayLiteral("application/json"));
    request.setRawHeader("Accept", "application/json");
    // A redirected POST may turn into a GET elsewhere; a spot goes where it was sent or nowhere.
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::ManualRedirectPolicy);
    request.setTransferTimeout(m_timeoutMs);
    QNetworkReply *reply = m_network->post(request, jsonBody);
    connect(reply, &QNetworkReply::finished, this, [this, reply, done = std::move(done)] {
        reply->deleteLater();
        const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        const QNetworkReply::NetworkError error = reply->error();
        if (error == QNetworkReply::OperationCanceledError || error == QNetworkReply::TimeoutError)
            return done(QStringLiteral("no answer from %1").arg(m_serviceName));
        if (error == QNetworkReply::NoError && status >= 200 && status < 300)
            return done(QString());
        const QString said = refusalText(reply->readAll());
        done(said.isEmpty() ? reply->errorString() : said);
    });
}

QString WebSpotPoster::refusalText(const QByteArray &body)
{
    QJsonParseError parseError{};
    const QJsonDocument document = QJsonDocument::fromJson(body, &parseError);
    QString text;
    if (parseError.error == QJsonParseError::NoError) {
        const QJsonObject object = document.object();
        for (const char *key : {"message", "detail", "error", "errors"}) {
            text = messageOf(object.value(QLatin1String(key)));
            if (!text.isEmpty())
                break;
        }
        if (document.isArray())
            text = messageOf(document.array());
    } else if (!body.trimmed().startsWith('<')) { // an HTML error page says nothing useful here
        text = QString::fromUtf8(body);
    }
    return text.simplified().left(k_maxRefusalChars);
}
