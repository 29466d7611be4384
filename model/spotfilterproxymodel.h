#pragma once

#include "model/bands.h"
#include "model/stationspot.h"

#include <QPointer>
#include <QSet>
#include <QSortFilterProxyModel>
#include <QString>

#include <array>
#include <functional>

class QTimer;

// Decides which spots the table shows (source, status, mode, band, age,
// programme, association, search text) and sorts by the model's sort values.
class StationModel;

class SpotFilterProxyModel final : public QSortFilterProxyModel
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SpotFilterProxyModel)

public:
    // Status filter values besides the StationSpot::Status numbers.
    static constexpr int k_statusActive = -2;
    static constexpr int k_statusAll = -1;
    static constexpr int k_refilterMs = 60000;
    static constexpr int k_defaultMaxAgeMins = 30;
    using SourceFlags = std::array<bool, StationSpot::k_sourceCount>; // by StationSpot::Source
    // The streams (DX clusters, skimmers) are opt-in; every web source shows from the start.
    static constexpr SourceFlags k_defaultSourceEnabled{
        {true, true, true, true, true, false, true, false, true, true}};

    enum ModeClass : int { SsbMode = 0, CwMode = 1, AmMode = 2, FmMode = 3, OtherMode = 4 };
    static constexpr int k_modeClassCount = OtherMode + 1;

    explicit SpotFilterProxyModel(QObject *parent = nullptr);
    ~SpotFilterProxyModel() override;

    void setSourceFilter(const SourceFlags &enabled);
    // The first seven sources by name; the later ones keep their choice.
    void setSourceFilter(bool sota, bool pota, bool wwff, bool wwbota, bool bota, bool dx, bool gma);
    void setStatusFilter(int status);
    void setTextFilter(const QString &text);
    void setModeFilter(bool ssb, bool cw, bool am, bool fm, bool other);
    void setMaxAgeMins(int minutes);
    void setBandFilter(const QSet<QString> &bands);
    void setPotaPrograms(const QSet<QString> &programs);
    void setSotaAssociations(const QSet<QString> &associations);
    // A further test from outside the model's knowledge (the operator's own
    // log): spots it answers true for are hidden. Empty: no test.
    using HiddenTest = std::function<bool(const StationSpot &)>;
    void setHiddenTest(HiddenTest test);

    bool isSourceEnabled(int source) const;
    int statusFilter() const { return m_statusFilter; }
    QString textFilter() const { return m_textFilter; }
    bool isModeClassEnabled(ModeClass modeClass) const { return m_modeEnabled[modeClass]; }
    int maxAgeMins() const { return m_maxAgeMins; }
    QSet<QString> bandFilter() const { return m_bands; }
    QSet<QString> potaProgramFilter() const { return m_potaPrograms; }
    QSet<QString> sotaAssociationFilter() const { return m_sotaAssociations; }
    int refilterIntervalMs() const;
    bool isRefilterActive() const;

    // The class of a mode text, compared upper-cased and whole.
    static ModeClass modeClass(const QString &mode);

    void setSourceModel(QAbstractItemModel *model) override;

    // The row test on a spot of the model (the age against the model's clock).
    bool acceptsSpot(const StationSpot &spot) const;

signals:
    // Any rule changed (or the age window moved on): rows may have come or gone.
    void visibilityRulesChanged();

protected:
    bool filterAcceptsRow(int sourceRow, const QModelIndex &sourceParent) const override;
    bool lessThan(const QModelIndex &left, const QModelIndex &right) const override;

private:
    void refilter();

    // The source as a station model, or null; looked up once, not per row,
    // and cleared should the model go before the proxy.
    QPointer<const StationModel> m_stationModel;
    SourceFlags m_sourceEnabled = k_defaultSourceEnabled;
    int m_statusFilter = k_statusActive;
    QString m_textFilter;
    std::array<bool, k_modeClassCount> m_modeEnabled{{true, true, true, true, true}};
    int m_maxAgeMins = k_defaultMaxAgeMins;
    QSet<QString> m_bands;
    QSet<QString> m_potaPrograms;
    QSet<QString> m_sotaAssociations;
    QTimer *m_refilterTimer;
    HiddenTest m_hiddenTest;
    // The band set in k_bands order, so that the per-row test looks no name up.
    std::array<bool, k_bands.size()> m_bandEnabled{};
};
