#pragma once

#include "app/logbook/logtarget.h"

#include <QDialog>
#include <QList>
#include <QString>
#include <QStringList>

struct AppSettings;
class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class LogbookPage;
class QLineEdit;
class QPlainTextEdit;
class QSpinBox;

// The settings the preferences dialog edits.
struct Preferences
{
    QString callsign;
    QString sotaRef;
    int maxAgeMins = 30;
    int refreshIntervalSecs = 60;
    bool hasUserLocation = false;
    double latitude = 0.0;
    double longitude = 0.0;
    QStringList watchCallsigns;
    QStringList watchReferences;
    bool wsEnabled = true;
    QString wsHost = QStringLiteral("127.0.0.1");
    quint16 wsPort = 2103;
    bool alertsEnabled = true;
    bool alertSound = true;
    bool alertNeededOnly = false;
    QList<LogTarget> logTargets;
    bool confirmLog = false;
    int bandPlanRegion = 0; // 0: from the call sign
    QString spotComment;
    bool rbnAllStations = false;
    bool rbnContinentsFromCall = true;
    QStringList rbnContinents;

    static Preferences fromSettings(const AppSettings &settings);
    void applyTo(AppSettings &settings) const;
};

// "Preferences": the operator's call sign and position, spot age and refresh
// period, the watch lists and the local API's address.
class PreferencesDialog final : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PreferencesDialog)

public:
    explicit PreferencesDialog(const Preferences &values, QWidget *parent = nullptr);
    ~PreferencesDialog() override;

    // The fields as accepting stores them: call sign and reference trimmed and upper-cased.
    Preferences preferences() const;

    // One entry per non-empty line, trimmed and upper-cased; a line of blanks stays as an
    // empty entry, as it always has.
    static QStringList parseWatchList(const QString &text);

private:
    QWidget *buildWatchlistGroup(const Preferences &values);
    QWidget *buildApiGroup(const Preferences &values);
    QWidget *buildAlertGroup(const Preferences &values);
    QWidget *buildRbnPage(const Preferences &values);

    QLineEdit *m_callsign;
    QLineEdit *m_sotaRef;
    QLineEdit *m_spotComment;
    QSpinBox *m_maxAge;
    QSpinBox *m_refreshInterval;
    QCheckBox *m_hasLocation;
    QDoubleSpinBox *m_latitude;
    QDoubleSpinBox *m_longitude;
    QPlainTextEdit *m_watchCallsigns = nullptr;
    QPlainTextEdit *m_watchReferences = nullptr;
    QCheckBox *m_wsEnabled = nullptr;
    QComboBox *m_wsHost = nullptr;
    QSpinBox *m_wsPort = nullptr;
    QCheckBox *m_alertsEnabled = nullptr;
    QCheckBox *m_alertSound = nullptr;
    QCheckBox *m_alertNeededOnly = nullptr;
    LogbookPage *m_logbook = nullptr;
    QCheckBox *m_confirmLog;
    QComboBox *m_bandPlanRegion;
    QComboBox *m_rbnScope = nullptr;
    QCheckBox *m_rbnFromCall = nullptr;
    QList<QCheckBox *> m_rbnContinents; // in continentCodes() order
};
