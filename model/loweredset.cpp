#include "model/loweredset.h"

#include <algorithm>

void LoweredSet::assign(const QStringList &entries)
{
    m_sorted.clear();
    for (const QString &entry : entries) {
        const QString trimmed = entry.trimmed();
        if (!trimmed.isEmpty())
            m_sorted.push_back(trimmed.toLower());
    }
    std::sort(m_sorted.begin(), m_sorted.end());
    m_sorted.erase(std::unique(m_sorted.begin(), m_sorted.end()), m_sorted.end());
}

bool LoweredSet::containsLowered(const QString &text) const
{
    if (m_sorted.empty())
        return false;
    const bool ascii = std::all_of(text.cbegin(), text.cend(), [](QChar c) { return c.unicode() < 0x80; });
    if (!ascii)
        return std::binary_search(m_sorted.cbegin(), m_sorted.cend(), text.toLower());
    // ASCII text is lowered a character at a time while it is compared.
    const auto compare = [&text](const QString &entry) {
        const qsizetype n = std::min(entry.size(), text.size());
        for (qsizetype i = 0; i < n; ++i) {
            const char16_t e = entry.at(i).unicode();
            char16_t t = text.at(i).unicode();
            if (t >= u'A' && t <= u'Z')
                t = char16_t(t + (u'a' - u'A'));
            if (e != t)
                return e < t ? -1 : 1;
        }
        return entry.size() < text.size() ? -1 : (entry.size() > text.size() ? 1 : 0);
    };
    const auto it = std::partition_point(m_sorted.cbegin(), m_sorted.cend(),
                                         [&](const QString &entry) { return compare(entry) < 0; });
    return it != m_sorted.cend() && compare(*it) == 0;
}

QSet<QString> LoweredSet::toSet() const
{
    return QSet<QString>(m_sorted.cbegin(), m_sorted.cend());
}
