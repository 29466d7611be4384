#include "app/settingsfile.h"
#include "model/filterstate.h"
#include "model/spotfilterproxymodel.h"
#include "support/modeltest.h"
#include "support/testmain.h"

#include <QJsonDocument>

class TestFilterState final : public ModelTest
{
    Q_OBJECT

    static QJsonObject parse(const QByteArray &json) { return QJsonDocument::fromJson(json).object(); }
    // The API's view plus the search text, which the API only ever sets.
    static QJsonObject apiView(const FilterState &state)
    {
        QJsonObject json = state.toApiJson();
        json.insert(QStringLiteral("search"), state.searchText);
        return json;
    }

private slots:
    void bandChoice_data()
    {
        QTest::addColumn<QStringList>("unticked");
        QTest::addColumn<QString>("shown");
        QStringList every;
        for (const Band &band : k_bands)
            every << QString::fromLatin1(band.name);
        QTest::newRow("all ticked: no band test")
            << QStringList() << QStringLiteral("K1FORTY K1OUT K1TWENTY");
        QTest::newRow("40m off") << QStringList{QStringLiteral("40m")} << QStringLiteral("K1TWENTY");
        QTest::newRow("none ticked") << every << QString();
    }

    void bandChoice()
    {
        QFETCH(QStringList, unticked);
        m_model->mergeSpots(
            spots(QStringLiteral("POTA K1OUT US-1 5000, POTA K1TWENTY US-2 14062, POTA K1FORTY US-3 7030")));
        SpotFilterProxyModel proxy;
        proxy.setSourceModel(m_model);
        FilterState state;
        state.setDisabledBandNames(unticked);
        state.applyTo(proxy);
        QStringList calls;
        for (int row = 0; row < proxy.rowCount(); ++row)
            calls << proxy.index(row, StationModel::CallsignColumn).data().toString();
        calls.sort();
        QTEST(calls.join(QLatin1Char(' ')), "shown");
    }

    void statusIndexAndValue()
    {
        const int values[] = {-2, -1, 1, 2, 3};
        for (int index = 0; index < 5; ++index) {
            FilterState state;
            state.statusIndex = index;
            QCOMPARE(state.statusValue(), values[index]);
            QCOMPARE(FilterState::statusIndexForValue(values[index]), index);
        }
        QCOMPARE(FilterState::statusIndexForValue(0), -1);
        FilterState state;
        state.statusIndex = 2;
        state.mergeApiJson(parse(R"({"status_mode": 0})")); // no entry has it
        QCOMPARE(state.statusIndex, 2);
    }

    void apiJson()
    {
        FilterState state;
        state.sources = {{false, true, false, false, true, true, false}};
        state.modes = {{false, true, true, false, false}};
        state.statusIndex = 3;
        state.maxAgeMins = 45;
        const QJsonObject json = parse(R"({"sota": false, "pota": true, "wwff": false, "wwbota": false,
            "bota": true, "dx": true, "gma": false, "mode_ssb": false, "mode_cw": true, "mode_am": true,
            "mode_fm": false, "mode_other": false, "status_mode": 2, "max_age_mins": 45})");
        QCOMPARE(state.toApiJson(), json);
    }

    void apiMergeTakesPresentKeys_data()
    {
        QTest::addColumn<QByteArray>("request");
        QTest::addColumn<QByteArray>("changed"); // in the state's API view afterwards
        const char *rows[][3] = {
            {"nothing", "{}", "{}"},
            {"a source", R"({"wwff": false})", nullptr}, // null: changed as asked
            {"a mode", R"({"mode_fm": false})", nullptr},
            {"status", R"({"status_mode": 3})", nullptr},
            {"age", R"({"max_age_mins": 90})", nullptr},
            {"age below 1", R"({"max_age_mins": 0})", R"({"max_age_mins": 1})"},
            {"age above 720", R"({"max_age_mins": 5000})", R"({"max_age_mins": 720})"},
            {"search", R"({"search": "K1ABC"})", nullptr},
        };
        for (const auto &row : rows)
            QTest::newRow(row[0]) << QByteArray(row[1]) << QByteArray(row[2] ? row[2] : row[1]);
    }

    void apiMergeTakesPresentKeys()
    {
        QFETCH(QByteArray, request);
        QFETCH(QByteArray, changed);
        FilterState state;
        QJsonObject expected = apiView(state);
        const QJsonObject changes = parse(changed);
        for (auto it = changes.begin(); it != changes.end(); ++it)
            expected.insert(it.key(), it.value());
        state.mergeApiJson(parse(request));
        QCOMPARE(apiView(state), expected);
    }

    // Every setter re-runs the filter, which drops a spot that has aged out since the last run.
    void applyToSetsOnlyWhatDiffers()
    {
        m_model->mergeSpots(spots(QStringLiteral("POTA K1ABC US-0001 14062 600")));
        SpotFilterProxyModel proxy;
        proxy.setSourceModel(m_model);
        FilterState state;
        state.searchText = QStringLiteral("  k1  ");
        state.applyTo(proxy);
        QCOMPARE(proxy.rowCount(), 1); // the proxy filters when first asked
        m_now += 25 * 60 * 1000;       // 35 minutes old now
        state.applyTo(proxy);
        QCOMPARE(proxy.rowCount(), 1);

        state.sources = {{false, true, true, false, true, true, false}};
        state.modes = {{true, false, false, true, true}};
        state.setDisabledBandNames({QStringLiteral("60m")});
        state.statusIndex = 4;
        state.maxAgeMins = 90;
        state.potaPrograms = QStringList{QStringLiteral("US"), QStringLiteral("VE")};
        state.sotaAssociations = QStringList{QStringLiteral("W7A")};
        state.applyTo(proxy);
        for (int source = 0; source < FilterState::k_sourceCount; ++source)
            QCOMPARE(proxy.isSourceEnabled(source), state.sources[size_t(source)]);
        for (int mode = 0; mode < FilterState::k_modeCount; ++mode)
            QCOMPARE(proxy.isModeClassEnabled(SpotFilterProxyModel::ModeClass(mode)),
                     state.modes[size_t(mode)]);
        QCOMPARE(proxy.bandFilter(), state.proxyBandSet());
        QCOMPARE(proxy.bandFilter().size(), int(k_bands.size()) - 1);
        QCOMPARE(proxy.statusFilter(), 3);
        QCOMPARE(proxy.maxAgeMins(), 90);
        QCOMPARE(proxy.potaProgramFilter(), (QSet<QString>{QStringLiteral("US"), QStringLiteral("VE")}));
        QCOMPARE(proxy.sotaAssociationFilter(), QSet<QString>{QStringLiteral("W7A")});
        QCOMPARE(proxy.textFilter(), QStringLiteral("k1"));
    }

    void settingsMapping()
    {
        AppSettings settings;
        settings.disabledBands = QStringList{QStringLiteral("11m"), QStringLiteral("40m")};
        FilterState state = settings.filterState();
        QCOMPARE(state.disabledBandNames(), QStringList{QStringLiteral("40m")});
        state.sources = {{true, false, true, true, false, true, true}};
        state.modes = {{true, true, false, true, false}};
        state.statusIndex = 3;
        state.maxAgeMins = 120;
        state.potaPrograms = QStringList{QStringLiteral("US")};
        state.sotaAssociations = QStringList{QStringLiteral("G"), QStringLiteral("W7A")};
        settings.setFilterState(state);
        QCOMPARE(settings.disabledBands, QStringList{QStringLiteral("40m")});
        QCOMPARE(settings.statusFilter, 3);
        QCOMPARE(settings.potaPrograms, QStringList{QStringLiteral("US")});
        QCOMPARE(settings.filterState(), state);
    }
};

TALLIS_TEST_MAIN(TestFilterState)
#include "tst_filterstate.moc"
