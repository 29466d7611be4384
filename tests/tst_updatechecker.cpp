#include "app/updatechecker.h"
#include "support/httptestserver.h"
#include "support/testmain.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSignalSpy>

namespace {
constexpr qint64 k_ownBuildTime = 1776702779;
}

class TestUpdateChecker final : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_server = new HttpTestServer(this);
        QVERIFY(m_server->start());
        m_checker = new UpdateChecker(&m_network, this);
        m_checker->setOwnBuildTime(k_ownBuildTime);
    }
    void cleanup()
    {
        delete m_checker;
        delete m_server;
    }

    void answers_data()
    {
        QTest::addColumn<QByteArray>("body");
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("announced"); // empty: no bar
        QTest::newRow("equal") << QByteArray("1776702779") << 200 << QString();
        QTest::newRow("one second later, padded") << QByteArray(" 1776702780\n") << 200 << "1776702780";
        QTest::newRow("older") << QByteArray("1776702778") << 200 << QString();
        QTest::newRow("zero") << QByteArray("0") << 200 << QString();
        QTest::newRow("negative") << QByteArray("-5") << 200 << QString();
        QTest::newRow("letters") << QByteArray("soon") << 200 << QString();
        QTest::newRow("digits then text") << QByteArray("1776702780 UTC") << 200 << QString();
        QTest::newRow("empty") << QByteArray() << 200 << QString();
        QTest::newRow("error page") << QByteArray("<html>Not Found</html>") << 404 << QString();
    }
    void answers()
    {
        QFETCH(QByteArray, body);
        QFETCH(int, status);
        QFETCH(QString, announced);
        m_server->setRoute("/tallis-build-time", body, status, "text/plain");
        m_checker->setUrl(QUrl(m_server->url().toString() + QStringLiteral("/tallis-build-time")));
        QSignalSpy available(m_checker, &UpdateChecker::updateAvailable);
        QSignalSpy received(m_server, &HttpTestServer::requestReceived);

        m_checker->checkForUpdates();
        QVERIFY(received.wait());
        // The reply is deleted once handled; waiting for that proves the answer was read.
        QTRY_VERIFY(m_network.findChildren<QNetworkReply *>().isEmpty());
        if (announced.isEmpty()) {
            QCOMPARE(available.count(), 0);
        } else {
            QCOMPARE(available.count(), 1);
            QCOMPARE(available.at(0).at(0).toString(), announced);
        }
    }

    void secondCheckAbandonsTheFirst()
    {
        m_server->setRoute("/first", "1776702790");
        m_server->setRoute("/second", "1776702800");
        m_server->setHoldReplies(true);
        QSignalSpy available(m_checker, &UpdateChecker::updateAvailable);
        QSignalSpy received(m_server, &HttpTestServer::requestReceived);

        m_checker->setUrl(QUrl(m_server->url().toString() + QStringLiteral("/first")));
        m_checker->checkForUpdates();
        QVERIFY(received.wait());
        m_checker->setUrl(QUrl(m_server->url().toString() + QStringLiteral("/second")));
        m_checker->checkForUpdates();
        QTRY_COMPARE(received.count(), 2);
        m_server->releaseHeld();

        QVERIFY(available.wait());
        QCOMPARE(available.count(), 1);
        QCOMPARE(available.at(0).at(0).toString(), QStringLiteral("1776702800"));
        QTRY_VERIFY(m_network.findChildren<QNetworkReply *>().isEmpty());
        QCOMPARE(available.count(), 1);
    }

private:
    QNetworkAccessManager m_network;
    HttpTestServer *m_server = nullptr;
    UpdateChecker *m_checker = nullptr;
};

TALLIS_TEST_MAIN(TestUpdateChecker)
#include "tst_updatechecker.moc"
