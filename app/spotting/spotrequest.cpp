#include "app/spotting/spotrequest.h"

#include "model/bands.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>

namespace {

// WWBOTA takes longer comments than POTA; this only bounds them.
constexpr int k_maxWwbotaCommentChars = 200;

const QRegularExpression &potaReference()
{
    static const QRegularExpression re(QStringLiteral("^[A-Z0-9]{1,2}-[0-9]{4,5}$"));
    return re;
}

const QRegularExpression &wwbotaReference()
{
    static const QRegularExpression re(QStringLiteral("^B/[A-Z0-9]{1,3}-[0-9]{4}$"));
    return re;
}

QString withQrt(const QString &comment, bool qrt)
{
    if (!qrt || comment.contains(QLatin1String("QRT"), Qt::CaseInsensitive))
        return comment;
    return QStringLiteral("QRT ") + comment;
}

} // namespace

SpotRequest SpotRequest::fromSpot(const StationSpot &spot, double rigKhz, const QString &commentTemplate)
{
    SpotRequest r;
    r.callsign = spot.callsign;
    r.reference = spot.reference;
    r.referenceName = spot.referenceName;
    r.mode = spot.mode;
    r.frequencyKhz = rigKhz > 0 ? rigKhz : spot.frequencyKhz;
    const bool known = spot.source >= 0 && spot.source < StationSpot::k_sourceCount;
    r.programme = known ? spot.source : StationSpot::DX;
    r.target = r.programme == StationSpot::POTA || r.programme == StationSpot::WWBOTA ? r.programme
                                                                                      : StationSpot::DX;
    r.comments = commentTemplate;
    return r;
}

StationSpot::Source SpotRequest::programmeOf(const QString &reference)
{
    const QString first = splitReferences(reference).value(0);
    if (potaReference().match(first).hasMatch())
        return StationSpot::POTA;
    if (wwbotaReference().match(first).hasMatch())
        return StationSpot::WWBOTA;
    return StationSpot::DX;
}

bool SpotRequest::isTarget(StationSpot::Source target)
{
    return target == StationSpot::POTA || target == StationSpot::WWBOTA || target == StationSpot::DX;
}

QString SpotRequest::accountNeeded(StationSpot::Source programme)
{
    switch (programme) {
    case StationSpot::SOTA:
        return QStringLiteral("a signed-in SOTA account");
    case StationSpot::WWFF:
        return QStringLiteral("an application key");
    case StationSpot::GMA:
        return QStringLiteral("a cqGMA login");
    case StationSpot::ZLOTA:
        return QStringLiteral("an ontheair.nz user id and API key");
    case StationSpot::SIOTA:
        return QStringLiteral("a ParksnPeaks user id and API key");
    default:
        return QString();
    }
}

bool SpotRequest::isValidCallsign(const QString &callsign)
{
    static const QRegularExpression form(QStringLiteral("^[A-Z0-9]+(/[A-Z0-9]+)*$"));
    static const QRegularExpression digit(QStringLiteral("[0-9]"));
    return callsign.size() >= k_minCallsignChars && callsign.size() <= k_maxCallsignChars &&
           form.match(callsign).hasMatch() && digit.match(callsign).hasMatch();
}

bool SpotRequest::isValidReference(StationSpot::Source programme, const QString &reference)
{
    if (programme == StationSpot::POTA)
        return potaReference().match(reference).hasMatch();
    if (programme == StationSpot::WWBOTA)
        return wwbotaReference().match(reference).hasMatch();
    return true;
}

QStringList SpotRequest::splitReferences(const QString &text)
{
    static const QRegularExpression separators(QStringLiteral("[\\s,]+"));
    return text.toUpper().split(separators, Qt::SkipEmptyParts);
}

QStringList SpotRequest::references() const
{
    return splitReferences(reference);
}

SpotRequest SpotRequest::normalized() const
{
    SpotRequest r = *this;
    r.callsign = callsign.trimmed().toUpper();
    r.mode = mode.trimmed().toUpper();
    r.reference = references().join(QLatin1Char(' '));
    return r;
}

StationSpot::Source SpotRequest::referenceProgramme() const
{
    return target == StationSpot::DX ? programme : target;
}

QString SpotRequest::problem(const QString &ownCall) const
{
    if (ownCall.trimmed().isEmpty())
        return QStringLiteral("callsign not set");
    if (!isTarget(target))
        return QStringLiteral("unknown source");
    if (!isValidCallsign(callsign))
        return QStringLiteral("invalid callsign");
    if (bandIndexForFrequency(frequencyKhz) < 0)
        return QStringLiteral("frequency not in an amateur band");
    if (mode.trimmed().isEmpty())
        return QStringLiteral("missing mode");
    const StationSpot::Source checked = referenceProgramme();
    const QStringList refs = references();
    // A cluster spot may name no reference at all; a programme's service needs
    // one (POTA exactly one).
    const bool required = target != StationSpot::DX;
    const bool countOk = target == StationSpot::POTA ? refs.size() == 1 : !(required && refs.isEmpty());
    const bool formsOk = std::all_of(
        refs.cbegin(), refs.cend(), [checked](const QString &ref) { return isValidReference(checked, ref); });
    if (!countOk || !formsOk)
        return QStringLiteral("invalid reference for %1").arg(StationSpot::sourceName(checked));
    return QString();
}

bool SpotRequest::sameSpotAs(const SpotRequest &other) const
{
    return callsign.compare(other.callsign, Qt::CaseInsensitive) == 0 && references() == other.references() &&
           std::abs(frequencyKhz - other.frequencyKhz) <= 1.0;
}

QString SpotRequest::cleanText(const QString &text, int maxChars)
{
    // Compatibility decomposition splits "ü" into "u" and a combining mark,
    // which is then dropped with everything else outside ASCII.
    const QString decomposed = text.normalized(QString::NormalizationForm_KD);
    QString out;
    out.reserve(decomposed.size());
    for (const QChar c : decomposed) {
        const char16_t u = c.unicode();
        if (u < 0x20 || u == 0x7f)
            out.append(QLatin1Char(' '));
        else if (u < 0x7f)
            out.append(c);
    }
    out = out.simplified();
    if (out.size() > maxChars)
        out = out.left(maxChars).trimmed();
    return out;
}

QString SpotRequest::potaComment() const
{
    return cleanText(withQrt(comments, qrt), k_maxCommentChars);
}

QString SpotRequest::wwbotaComment() const
{
    QStringList missing;
    for (const QString &ref : references()) {
        if (!comments.contains(ref, Qt::CaseInsensitive))
            missing << ref;
    }
    missing << comments;
    return cleanText(missing.join(QLatin1Char(' ')), k_maxWwbotaCommentChars);
}

QString SpotRequest::clusterComment() const
{
    QString comment = withQrt(comments, qrt);
    const QString ref = references().join(QLatin1Char(' '));
    if (!ref.isEmpty() && !comment.contains(ref, Qt::CaseInsensitive)) {
        const QString prefix =
            programme == StationSpot::DX ? ref : StationSpot::sourceName(programme) + QLatin1Char(' ') + ref;
        comment = prefix + QLatin1Char(' ') + comment;
    }
    return cleanText(comment, k_maxCommentChars);
}

QString SpotRequest::clusterLine() const
{
    const QString comment = clusterComment();
    QString line = QStringLiteral("DX %1 %2").arg(QString::number(frequencyKhz, 'f', 1), callsign);
    if (!comment.isEmpty())
        line += QLatin1Char(' ') + comment;
    return line;
}
