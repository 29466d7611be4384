#include "sources/dxcc.h"
#include "support/testmain.h"

#include <QSet>
#include <QTest>

class TestDxcc : public QObject
{
    Q_OBJECT

private slots:
    void tableCounts();
    void lookup_data();
    void lookup();
    void extractPrefix_data();
    void extractPrefix();
};

void TestDxcc::tableCounts()
{
    const QHash<QString, const char *> &table = dxccPrefixTable();
    QCOMPARE(table.size(), 552);
    QCOMPARE(&dxccPrefixTable(), &table); // built once

    QSet<QString> entities;
    QHash<qsizetype, QStringList> byLength;
    for (auto it = table.constBegin(); it != table.constEnd(); ++it) {
        QCOMPARE(it.key(), it.key().toUpper());
        QVERIFY(it.key().size() >= 1 && it.key().size() <= 4);
        entities.insert(QString::fromLatin1(it.value()));
        byLength[it.key().size()].append(it.key());
    }
    QCOMPARE(entities.size(), 311);
    QCOMPARE(byLength.value(2).size(), 445);

    auto sorted = [](QStringList list) {
        list.sort();
        return list;
    };
    QCOMPARE(sorted(byLength.value(1)), QStringList({"B", "F", "G", "I", "K", "M", "N", "R", "W"}));
    QCOMPARE(sorted(byLength.value(4)),
             sorted({"CE0X", "CE0Y", "CE0Z", "KH5K", "KH5J", "KH7K", "VP2E", "VP2M", "VP2V", "VK0H", "VK0M",
                     "VK9C", "VK9L", "VK9M", "VK9N", "VK9W", "VK9X"}));
    QCOMPARE(sorted(byLength.value(3)),
             sorted({"KG4", "KH0", "KH1", "KH2", "KH3", "KH4", "KH5", "KH6", "KH7", "KH8", "KH9", "KP1",
                     "KP2", "KP4", "KP5", "VQ9", "VU4", "VU7", "EA6", "EA8", "EA9", "IG9", "IH9", "IS0",
                     "JD1", "OH0", "OJ0", "PJ2", "PJ4", "PJ5", "PJ6", "PJ7", "SV5", "SV9", "UA2", "ZB2",
                     "ZD7", "ZD8", "ZD9", "ZL7", "ZL8", "ZL9", "ZS8", "3B6", "3B7", "3B8", "3B9", "3C0",
                     "3DA", "3Y0", "4U1", "KC4", "DP0", "ZL5", "HC8", "HK0", "T30", "T31", "T32", "FT5",
                     "ZC4", "XX9", "CY0", "CY9", "E51", "E50", "TI9", "HB0", "CT3", "CT9", "H44", "9M2",
                     "9M6", "9M8", "VP5", "VP6", "VP8", "VP9", "VK0", "ZKL", "ZK3"}));

    // Rows that look wrong but are kept, and allocations that are absent.
    const QList<QPair<QString, QString>> rows = {
        {"AM", "Spain"},          {"AN", "Spain"},        {"AO", "Spain"},
        {"7S", "Sweden"},         {"8S", "Sweden"},       {"YU", "Romania"},
        {"XX", "Macao"},          {"3Z", "Poland"},       {"ZK", "Tokelau"},
        {"ZKL", "Tokelau"},       {"ZK3", "Tokelau"},     {"CE", "Chile"},
        {"UA", "Russia"},         {"UA2", "Kaliningrad"}, {"4U1", "United Nations HQ"},
        {"3DA", "Eswatini"},      {"KH7", "Hawaii"},      {"KH6", "Hawaii"},
        {"KH5", "Palmyra Atoll"},
    };
    for (const auto &row : rows)
        QCOMPARE(QString::fromLatin1(table.value(row.first)), row.second);
    for (const char *absent : {"AA", "AL", "2E", "VP2", "A", "CE0"})
        QVERIFY2(!table.contains(QString::fromLatin1(absent)), absent);
}

void TestDxcc::lookup_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("entity");

    QTest::newRow("one-letter prefix") << "K1ABC"
                                       << "United States";
    QTest::newRow("three beats one") << "KH6XYZ"
                                     << "Hawaii";
    QTest::newRow("four beats three") << "KH7KA"
                                      << "Kure Atoll";
    QTest::newRow("KH7 is Hawaii") << "KH7AB"
                                   << "Hawaii";
    QTest::newRow("Jarvis") << "KH5JA"
                            << "Jarvis Island";
    QTest::newRow("Kingman") << "KH5K/A"
                             << "Kingman Reef";
    QTest::newRow("Palmyra") << "KH5AB"
                             << "Palmyra Atoll";
    QTest::newRow("two letters") << "VE3ABC"
                                 << "Canada";
    QTest::newRow("Canaries") << "EA8ABC"
                              << "Canary Islands";
    QTest::newRow("Spain") << "EA1ABC"
                           << "Spain";
    QTest::newRow("Easter Island") << "CE0YAB"
                                   << "Easter Island";
    QTest::newRow("Chile") << "CE3ABC"
                           << "Chile";
    QTest::newRow("Anguilla") << "VP2EAB"
                              << "Anguilla";
    QTest::newRow("no plain VP2") << "VP2AB"
                                  << "";
    QTest::newRow("UN HQ") << "4U1UN"
                           << "United Nations HQ";
    QTest::newRow("Vienna is not 4U1") << "4U2ABC"
                                       << "";
    QTest::newRow("punctuated name") << "VK9CA"
                                     << "Cocos (Keeling) Islands";
    QTest::newRow("ampersand name") << "J88AB"
                                    << "St. Vincent & the Grenadines";
    QTest::newRow("longest entity name") << "1A0KM"
                                         << "Sovereign Military Order of Malta";
    QTest::newRow("lower case") << "kh6xyz"
                                << "Hawaii";
    QTest::newRow("absent AA") << "AA1AA"
                               << "";
    QTest::newRow("absent 2E") << "2E0ABC"
                               << "";
    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("only a modifier") << "/P"
                                     << "";
    QTest::newRow("two modifiers") << "P/M"
                                   << "";
    QTest::newRow("maritime mobile alone") << "/MM"
                                           << "";
    QTest::newRow("DL portable in US") << "DL/K1ABC"
                                       << "Germany";
    QTest::newRow("portable") << "K1ABC/P"
                              << "United States";
    QTest::newRow("Canaries portable") << "EA8/DL1ABC"
                                       << "Canary Islands";
    QTest::newRow("Hawaii portable") << "W1AW/KH6"
                                     << "Hawaii";
    QTest::newRow("area digit") << "K1ABC/7"
                                << "";
    QTest::newRow("maritime mobile") << "G4ABC/MM"
                                     << "England";
    QTest::newRow("garbage") << QString::fromUtf8("\xc3\xa9\xe2\x80\x94//\x01") << "";
}

void TestDxcc::lookup()
{
    QFETCH(QString, call);
    QFETCH(QString, entity);
    QCOMPARE(dxEntityForCallsign(call), entity);
}

void TestDxcc::extractPrefix_data()
{
    QTest::addColumn<QString>("call");
    QTest::addColumn<QString>("prefix");

    QTest::newRow("plain") << "k1abc"
                           << "K1ABC";
    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("shorter designator first") << "DL/K1ABC"
                                              << "DL";
    QTest::newRow("shorter designator second") << "K1ABC/KH6"
                                               << "KH6";
    QTest::newRow("equal length takes first") << "EA8/DL1"
                                              << "EA8";
    QTest::newRow("modifiers dropped") << "K1ABC/QRP/P"
                                       << "K1ABC";
    QTest::newRow("all modifiers") << "K1ABC/MM"
                                   << "K1ABC";
    QTest::newRow("lighthouse") << "F5ABC/LH"
                                << "F5ABC";
    QTest::newRow("third part ignored") << "EA8/DL1ABC/9"
                                        << "EA8";
    QTest::newRow("only modifiers") << "P/M"
                                    << "P";
    QTest::newRow("leading slash") << "/P"
                                   << "";
    QTest::newRow("empty part is shorter") << "K1ABC//X"
                                           << "";
}

void TestDxcc::extractPrefix()
{
    QFETCH(QString, call);
    QFETCH(QString, prefix);
    QCOMPARE(::extractPrefix(call), prefix);
}

TALLIS_TEST_MAIN(TestDxcc)
#include "tst_dxcc.moc"
