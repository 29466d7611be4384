#pragma once

#include <QSet>
#include <QString>
#include <QStringList>

#include <vector>

// A set of trimmed, lower-cased texts (the watch lists) that answers whether
// it holds text.toLower() without building that copy: the table asks once per
// painted cell.
class LoweredSet final
{
public:
    // Keeps every entry trimmed and lower-cased; blank entries are skipped.
    void assign(const QStringList &entries);
    bool containsLowered(const QString &text) const;
    QSet<QString> toSet() const;

private:
    std::vector<QString> m_sorted;
};
