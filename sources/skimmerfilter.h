#pragma once

#include "sources/skimmerreport.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <functional>

// Which skimmer reports reach the table: those of skimmers on the chosen
// continents (a skimmer hears what propagates to it, so a far one tells the
// operator little), and, unless every station is wanted, only stations the
// operator is hunting.
class SkimmerFilter final
{
public:
    // Whether the operator hunts this call sign (upper case).
    using HuntedTest = std::function<bool(const QString &callsign)>;

    // Empty: skimmers anywhere.
    void setContinents(const QStringList &continents);
    QStringList continents() const { return m_continents; }
    void setHuntedTest(HuntedTest test) { m_hunted = std::move(test); }
    // Only hunted stations pass (with a test set), or every station.
    void setHuntedOnly(bool huntedOnly) { m_huntedOnly = huntedOnly; }
    bool huntedOnly() const { return m_huntedOnly; }

    bool accepts(const SkimmerReport &report);

private:
    static constexpr qsizetype k_maxRememberedSkimmers = 4096;
    bool skimmerOnContinent(const QString &skimmer);

    QStringList m_continents;
    HuntedTest m_hunted;
    bool m_huntedOnly = false;
    QHash<QString, bool> m_skimmerPasses; // a few hundred skimmers, each asked thousands of times
};
