#include "app/dialogs/preferencesdialog.h"

#include "app/dialogs/dialogfields.h"
#include "app/dialogs/logbookpage.h"
#include "app/settingsfile.h"
#include "sources/dxcc.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSpinBox>
#include <QTabWidget>
#include <QVBoxLayout>

namespace {

QDoubleSpinBox *coordinateSpinBox(QWidget *parent, double limit, double value, const QString &objectName,
                                  const QString &toolTip)
{
    auto *spin = new QDoubleSpinBox(parent);
    spin->setObjectName(objectName);
    spin->setDecimals(6);
    spin->setSingleStep(0.001);
    spin->setRange(-limit, limit);
    spin->setValue(value);
    spin->setToolTip(toolTip);
    return spin;
}

QPlainTextEdit *watchListEdit(QWidget *parent, const QStringList &entries, const QString &placeholder,
                              const QString &objectName)
{
    auto *edit = new QPlainTextEdit(parent);
    edit->setObjectName(objectName);
    edit->setFixedHeight(80);
    // Call signs never hold a tab; Tab leaves the box like in every other field.
    edit->setTabChangesFocus(true);
    edit->setPlaceholderText(placeholder);
    edit->setPlainText(entries.join(QLatin1Char('\n')));
    return edit;
}

QComboBox *regionCombo(QWidget *parent, int region)
{
    auto *combo = new QComboBox(parent);
    combo->setObjectName(QStringLiteral("bandPlanRegionCombo"));
    combo->addItem(QStringLiteral("From my callsign"), 0);
    combo->addItem(QStringLiteral("IARU Region 1 (Europe, Africa)"), 1);
    combo->addItem(QStringLiteral("IARU Region 2 (the Americas)"), 2);
    combo->addItem(QStringLiteral("IARU Region 3 (Asia, Pacific)"), 3);
    combo->setCurrentIndex(qBound(0, region, 3));
    combo->setToolTip(QStringLiteral("Where the band map shades CW, digital and phone"));
    return combo;
}

} // namespace

Preferences Preferences::fromSettings(const AppSettings &settings)
{
    Preferences p;
    p.callsign = settings.callsign;
    p.sotaRef = settings.sotaRef;
    p.maxAgeMins = settings.filter.maxAgeMins;
    p.refreshIntervalSecs = settings.refreshIntervalSecs;
    p.hasUserLocation = settings.hasUserLocation;
    p.latitude = settings.latitude;
    p.longitude = settings.longitude;
    p.watchCallsigns = settings.watchCallsigns;
    p.watchReferences = settings.watchReferences;
    p.wsEnabled = settings.wsEnabled;
    p.wsHost = settings.wsHost;
    p.wsPort = settings.wsPort;
    p.alertsEnabled = settings.alertsEnabled;
    p.alertSound = settings.alertSound;
    p.alertNeededOnly = settings.alertNeededOnly;
    p.logTargets = settings.logTargets;
    p.confirmLog = settings.confirmLog;
    p.bandPlanRegion = settings.bandPlanRegion;
    p.spotComment = settings.spotComment;
    p.rbnAllStations = settings.rbnAllStations;
    p.rbnContinentsFromCall = settings.rbnContinentsFromCall;
    p.rbnContinents = settings.rbnContinents;
    return p;
}

void Preferences::applyTo(AppSettings &settings) const
{
    settings.callsign = callsign;
    settings.sotaRef = sotaRef;
    settings.filter.maxAgeMins = maxAgeMins;
    settings.refreshIntervalSecs = refreshIntervalSecs;
    settings.hasUserLocation = hasUserLocation;
    settings.latitude = latitude;
    settings.longitude = longitude;
    settings.watchCallsigns = watchCallsigns;
    settings.watchReferences = watchReferences;
    settings.wsEnabled = wsEnabled;
    settings.wsHost = wsHost;
    settings.wsPort = wsPort;
    settings.alertsEnabled = alertsEnabled;
    settings.alertSound = alertSound;
    settings.alertNeededOnly = alertNeededOnly;
    settings.logTargets = logTargets;
    settings.confirmLog = confirmLog;
    settings.bandPlanRegion = bandPlanRegion;
    settings.spotComment = spotComment;
    settings.rbnAllStations = rbnAllStations;
    settings.rbnContinentsFromCall = rbnContinentsFromCall;
    settings.rbnContinents = rbnContinents;
}

PreferencesDialog::PreferencesDialog(const Preferences &values, QWidget *parent)
    : QDialog(parent)
    , m_callsign(new QLineEdit(values.callsign, this))
    , m_sotaRef(new QLineEdit(values.sotaRef, this))
    , m_spotComment(new QLineEdit(values.spotComment, this))
    , m_maxAge(DialogFields::spinBox(this, 1, 720, values.maxAgeMins, QStringLiteral("maxAgeSpin")))
    , m_refreshInterval(DialogFields::spinBox(this, 60, 3600, values.refreshIntervalSecs,
                                              QStringLiteral("refreshIntervalSpin")))
    , m_hasLocation(new QCheckBox(QStringLiteral("Enable distance / bearing columns"), this))
    , m_latitude(coordinateSpinBox(this, 90.0, values.latitude, QStringLiteral("latitudeSpin"),
                                   QStringLiteral("Your latitude in decimal degrees (positive = North)")))
    , m_longitude(coordinateSpinBox(this, 180.0, values.longitude, QStringLiteral("longitudeSpin"),
                                    QStringLiteral("Your longitude in decimal degrees (positive = East)")))
    , m_confirmLog(new QCheckBox(QStringLiteral("Confirm each contact before logging"), this))
    , m_bandPlanRegion(regionCombo(this, values.bandPlanRegion))
{
    setWindowTitle(QStringLiteral("Preferences"));
    setMinimumWidth(360);

    m_callsign->setObjectName(QStringLiteral("callsignEdit"));
    m_callsign->setPlaceholderText(QStringLiteral("e.g. W4ABC"));
    m_sotaRef->setObjectName(QStringLiteral("sotaRefEdit"));
    m_sotaRef->setPlaceholderText(QStringLiteral("e.g. W4C/CM-001"));
    m_sotaRef->setToolTip(QStringLiteral("Your SOTA summit reference"));
    m_spotComment->setObjectName(QStringLiteral("spotCommentEdit"));
    m_spotComment->setPlaceholderText(QStringLiteral("e.g. tnx QSO 73"));
    m_spotComment->setToolTip(QStringLiteral("The comment every spot you post starts from"));
    m_maxAge->setSuffix(QStringLiteral(" min"));
    m_maxAge->setToolTip(QStringLiteral("Hide spots older than this many minutes (default: 30)"));
    m_refreshInterval->setSuffix(QStringLiteral(" sec"));
    m_refreshInterval->setToolTip(QStringLiteral("How often to fetch new spots (minimum 60 seconds)"));
    m_hasLocation->setObjectName(QStringLiteral("locationCheck"));
    m_hasLocation->setChecked(values.hasUserLocation);
    m_latitude->setEnabled(values.hasUserLocation);
    m_longitude->setEnabled(values.hasUserLocation);
    connect(m_hasLocation, &QCheckBox::toggled, m_latitude, &QWidget::setEnabled);
    connect(m_hasLocation, &QCheckBox::toggled, m_longitude, &QWidget::setEnabled);
    m_confirmLog->setObjectName(QStringLiteral("confirmLogCheck"));
    m_confirmLog->setChecked(values.confirmLog);
    m_confirmLog->setToolTip(QStringLiteral("L opens the Log Contact dialog: reports, comment and the "
                                            "references to log. Shift+L always opens it"));

    auto *form = new QFormLayout;
    form->addRow(QStringLiteral("My Callsign:"), m_callsign);
    form->addRow(QStringLiteral("My SOTA Reference:"), m_sotaRef);
    form->addRow(QStringLiteral("Spot Comment:"), m_spotComment);
    form->addRow(QStringLiteral("Max Spot Age:"), m_maxAge);
    form->addRow(QStringLiteral("Refresh Interval:"), m_refreshInterval);
    form->addRow(QStringLiteral("My Location:"), m_hasLocation);
    form->addRow(QStringLiteral("Latitude:"), m_latitude);
    form->addRow(QStringLiteral("Longitude:"), m_longitude);
    form->addRow(QStringLiteral("Logging:"), m_confirmLog);
    form->addRow(QStringLiteral("Band plan region:"), m_bandPlanRegion);

    auto *general = new QWidget(this);
    auto *column = new QVBoxLayout(general);
    column->addLayout(form);
    column->addWidget(buildWatchlistGroup(values));
    column->addWidget(buildAlertGroup(values));
    column->addWidget(buildApiGroup(values));
    m_logbook = new LogbookPage(values.logTargets, this);
    auto *tabs = new QTabWidget(this);
    tabs->addTab(general, QStringLiteral("General"));
    tabs->addTab(m_logbook, QStringLiteral("Logbook"));
    tabs->addTab(buildRbnPage(values), QStringLiteral("RBN"));
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(tabs);
    layout->addWidget(DialogFields::okCancelButtons(this));
}

PreferencesDialog::~PreferencesDialog() = default;

QWidget *PreferencesDialog::buildWatchlistGroup(const Preferences &values)
{
    auto *group = new QGroupBox(QStringLiteral("Watchlists"), this);
    m_watchCallsigns = watchListEdit(group, values.watchCallsigns, QStringLiteral("W4ABC\nKG6YJ\n..."),
                                     QStringLiteral("watchCallsignsEdit"));
    m_watchReferences =
        watchListEdit(group, values.watchReferences, QStringLiteral("W4C/CM-001\nK-1234\n..."),
                      QStringLiteral("watchReferencesEdit"));
    auto *form = new QFormLayout(group);
    form->addRow(new QLabel(QStringLiteral("Watched callsigns appear in bright green.\n"
                                           "Watched references appear in bright blue.\n"
                                           "One entry per line, case-insensitive."),
                            group));
    form->addRow(QStringLiteral("Callsigns:"), m_watchCallsigns);
    form->addRow(QStringLiteral("References:"), m_watchReferences);
    return group;
}

QWidget *PreferencesDialog::buildApiGroup(const Preferences &values)
{
    auto *group = new QGroupBox(QStringLiteral("WebSocket API"), this);
    m_wsEnabled = new QCheckBox(QStringLiteral("Enable WebSocket API"), group);
    m_wsEnabled->setObjectName(QStringLiteral("wsEnabledCheck"));
    m_wsEnabled->setChecked(values.wsEnabled);
    m_wsHost = new QComboBox(group);
    m_wsHost->setObjectName(QStringLiteral("wsHostCombo"));
    m_wsHost->addItem(QStringLiteral("localhost only (127.0.0.1)"), QStringLiteral("127.0.0.1"));
    m_wsHost->addItem(QStringLiteral("All interfaces (0.0.0.0)"), QStringLiteral("0.0.0.0"));
    // An address set by hand in the file stays selectable rather than being lost.
    DialogFields::selectValue(m_wsHost, values.wsHost, values.wsHost);
    m_wsPort = DialogFields::spinBox(group, 1024, 65535, values.wsPort, QStringLiteral("wsPortSpin"));
    m_wsHost->setEnabled(values.wsEnabled);
    m_wsPort->setEnabled(values.wsEnabled);
    connect(m_wsEnabled, &QCheckBox::toggled, m_wsHost, &QWidget::setEnabled);
    connect(m_wsEnabled, &QCheckBox::toggled, m_wsPort, &QWidget::setEnabled);

    auto *form = new QFormLayout(group);
    form->addRow(QStringLiteral("Enabled:"), m_wsEnabled);
    form->addRow(QStringLiteral("Interface:"), m_wsHost);
    form->addRow(QStringLiteral("Port:"), m_wsPort);
    return group;
}

QWidget *PreferencesDialog::buildAlertGroup(const Preferences &values)
{
    auto *group = new QGroupBox(QStringLiteral("Alerts"), this);
    const auto check = [group](const QString &text, const char *objectName, bool on, const QString &tip) {
        auto *box = new QCheckBox(text, group);
        box->setObjectName(QLatin1String(objectName));
        box->setChecked(on);
        box->setToolTip(tip);
        return box;
    };
    m_alertsEnabled =
        check(QStringLiteral("Notify me of watched activations"), "alertsEnabledCheck", values.alertsEnabled,
              QStringLiteral("A desktop notification once per activation of a watched call sign or "
                             "reference; a click on it selects the spot"));
    m_alertSound = check(QStringLiteral("With a sound"), "alertSoundCheck", values.alertSound,
                         QStringLiteral("Ask the notification service to play its message sound"));
    m_alertNeededOnly = check(
        QStringLiteral("Only stations I still need on that band"), "alertNeededOnlyCheck",
        values.alertNeededOnly,
        QStringLiteral("Skip watched stations already worked on the band, going by your own contact log; "
                       "with empty watch lists, alert for every reference never worked"));
    auto *column = new QVBoxLayout(group);
    for (QCheckBox *box : {m_alertsEnabled, m_alertSound, m_alertNeededOnly})
        column->addWidget(box);
    return group;
}

QWidget *PreferencesDialog::buildRbnPage(const Preferences &values)
{
    auto *page = new QWidget(this);
    m_rbnScope = new QComboBox(page);
    m_rbnScope->setObjectName(QStringLiteral("rbnScopeCombo"));
    m_rbnScope->addItem(QStringLiteral("Stations I hunt"), false);
    m_rbnScope->addItem(QStringLiteral("Every station the skimmers hear"), true);
    m_rbnScope->setCurrentIndex(values.rbnAllStations ? 1 : 0);
    m_rbnScope->setToolTip(QStringLiteral("Stations I hunt: call signs on my watch list, or with a programme "
                                          "spot in the table within the spot age"));
    m_rbnFromCall = new QCheckBox(QStringLiteral("My continent, from my callsign"), page);
    m_rbnFromCall->setObjectName(QStringLiteral("rbnFromCallCheck"));
    m_rbnFromCall->setChecked(values.rbnContinentsFromCall);
    auto *continents = new QGridLayout;
    for (const QString &code : continentCodes()) {
        auto *box = new QCheckBox(continentName(code), page);
        box->setObjectName(QStringLiteral("rbnContinent") + code);
        box->setChecked(values.rbnContinents.contains(code));
        box->setEnabled(!values.rbnContinentsFromCall);
        connect(m_rbnFromCall, &QCheckBox::toggled, box, &QWidget::setDisabled);
        continents->addWidget(box, int(m_rbnContinents.size()) / 2, int(m_rbnContinents.size()) % 2);
        m_rbnContinents.append(box);
    }
    auto *form = new QFormLayout(page);
    form->addRow(new QLabel(QStringLiteral("Skimmers hear stations calling CQ, often before anyone spots "
                                           "them. Tick RBN in the filter bar to connect."),
                            page));
    form->addRow(QStringLiteral("Show:"), m_rbnScope);
    form->addRow(QStringLiteral("Skimmers on:"), m_rbnFromCall);
    form->addRow(QString(), continents);
    form->addRow(new QLabel(QStringLiteral("No continent ticked: skimmers anywhere."), page));
    return page;
}

Preferences PreferencesDialog::preferences() const
{
    Preferences p;
    p.callsign = m_callsign->text().trimmed().toUpper();
    p.sotaRef = m_sotaRef->text().trimmed().toUpper();
    p.maxAgeMins = m_maxAge->value();
    p.refreshIntervalSecs = m_refreshInterval->value();
    p.hasUserLocation = m_hasLocation->isChecked();
    p.latitude = m_latitude->value();
    p.longitude = m_longitude->value();
    p.watchCallsigns = parseWatchList(m_watchCallsigns->toPlainText());
    p.watchReferences = parseWatchList(m_watchReferences->toPlainText());
    p.wsEnabled = m_wsEnabled->isChecked();
    p.wsHost = m_wsHost->currentData().toString();
    p.wsPort = static_cast<quint16>(m_wsPort->value());
    p.alertsEnabled = m_alertsEnabled->isChecked();
    p.alertSound = m_alertSound->isChecked();
    p.alertNeededOnly = m_alertNeededOnly->isChecked();
    p.logTargets = m_logbook->targets();
    p.confirmLog = m_confirmLog->isChecked();
    p.bandPlanRegion = m_bandPlanRegion->currentData().toInt();
    p.spotComment = m_spotComment->text().trimmed();
    p.rbnAllStations = m_rbnScope->currentData().toBool();
    p.rbnContinentsFromCall = m_rbnFromCall->isChecked();
    for (QCheckBox *box : m_rbnContinents) {
        if (box->isChecked())
            p.rbnContinents.append(box->objectName().right(2));
    }
    return p;
}

QStringList PreferencesDialog::parseWatchList(const QString &text)
{
    QStringList entries = text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (QString &entry : entries)
        entry = entry.trimmed().toUpper();
    return entries;
}
