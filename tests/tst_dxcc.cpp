#include "sources/dxcc.h"
#include "support/testmain.h"

#include <QSet>
#include <QTest>

class TestDxcc : public QObject
{
    Q_OBJECT

private slots:
    void table();
    void lookup_data();
    void lookup();
    void extractPrefix();
};

void TestDxcc::table()
{
    const QHash<QString, const char *> &table = dxccPrefixTable();
    QCOMPARE(table.size(), 552);
    QSet<QString> entities;
    QList<int> byLength(5, 0);
    for (auto it = table.constBegin(); it != table.constEnd(); ++it) {
        QCOMPARE(it.key(), it.key().toUpper());
        QVERIFY2(it.key().size() >= 1 && it.key().size() <= 4, qPrintable(it.key()));
        ++byLength[it.key().size()];
        entities.insert(QString::fromLatin1(it.value()));
    }
    QCOMPARE(entities.size(), 311);
    QCOMPARE(byLength, QList<int>({0, 9, 445, 81, 17}));
}

void TestDxcc::lookup_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("entity");
    // Longest match of up to four characters; the table's irregular rows stand and missing
    // allocations give nothing; portable and operating designators.
    const QString rows = QString::fromUtf8(
        "K1ABC=United States;KH6XYZ=Hawaii;KH7KA=Kure Atoll;KH7AB=Hawaii;KH5JA=Jarvis Island;"
        "KH5AB=Palmyra Atoll;CE0YAB=Easter Island;CE3ABC=Chile;UA2ABC=Kaliningrad;VP2EAB=Anguilla;VP2AB=;"
        "4U1UN=United Nations HQ;4U2ABC=;1A0KM=Sovereign Military Order of Malta;kh6xyz=Hawaii;"
        "AO8ABC=Spain;YU1ABC=Romania;ZK3A=Tokelau;AA1AA=;2E0ABC=;"
        "DL/K1ABC=Germany;W1AW/KH6=Hawaii;EA8/DL1ABC=Canary Islands;K1ABC/P=United States;"
        "G4ABC/MM=England;K1ABC/7=;/P=;P/M=;=;\xc3\xa9\xe2\x80\x94//\x01=");
    for (const QString &row : rows.split(QLatin1Char(';'))) {
        const QStringList parts = row.split(QLatin1Char('='));
        QTest::newRow(qPrintable(row)) << parts.at(0) << parts.at(1);
    }
}

void TestDxcc::lookup()
{
    QFETCH(QString, call);
    QFETCH(QString, entity);
    QCOMPARE(dxEntityForCallsign(call), entity);
}

void TestDxcc::extractPrefix()
{
    const char *const rows[][2] = {
        {"k1abc", "K1ABC"},       // no designator: the whole call
        {"K1ABC/QRP/P", "K1ABC"}, // modifiers dropped
        {"EA8/DL1", "EA8"},       // equal length: the first
        {"EA8/DL1ABC/9", "EA8"},  // a third part is ignored
        {"P/M", "P"},             // nothing left: the first part
        {"/P", ""},               //
        {"K1ABC//X", ""},         // an empty part is the shorter one
    };
    for (const auto &row : rows)
        QVERIFY2(::extractPrefix(QString::fromLatin1(row[0])) == QLatin1String(row[1]), row[0]);
}

TALLIS_TEST_MAIN(TestDxcc)
#include "tst_dxcc.moc"
