#include "sources/dxcc.h"

#include <QSet>
#include <QStringList>

#include <algorithm>

namespace {

// Taken as it stands, irregular rows included (AM-AO as Spain, YU as
// Romania, no plain VP2, ...): an absent prefix simply yields no entity.
constexpr DxccEntity k_entities[] = {
    {"Afghanistan", "T6 YA", "AS"},
    {"African Italy", "IG9 IH9", "AF"},
    {"Agalega & St. Brandon Islands", "3B6", "AF"},
    {"Aland Islands", "OH0", "EU"},
    {"Alaska", "KL", "NA"},
    {"Albania", "ZA", "EU"},
    {"Algeria", "7R 7T 7U 7V 7W 7X 7Y", "AF"},
    {"American Samoa", "KH8", "OC"},
    {"Andaman & Nicobar Islands", "VU4", "AS"},
    {"Andorra", "C3", "EU"},
    {"Angola", "D2 D3", "AF"},
    {"Anguilla", "VP2E", "NA"},
    {"Annobon Island", "3C0", "AF"},
    {"Antigua & Barbuda", "V2", "NA"},
    {"Argentina", "LU", "SA"},
    {"Armenia", "EK", "AS"},
    {"Aruba", "P4", "SA"},
    {"Ascension Island", "ZD8", "AF"},
    {"Australia", "VK", "OC"},
    {"Australian Antarctic Territory", "VK0", "AN"},
    {"Austria", "OE", "EU"},
    {"Azerbaijan", "4J 4K", "AS"},
    {"Azores", "CU", "EU"},
    {"Bahamas", "C6", "NA"},
    {"Bahrain", "A9", "AS"},
    {"Baker & Howland Islands", "KH1", "OC"},
    {"Balearic Islands", "EA6", "EU"},
    {"Bangladesh", "S2", "AS"},
    {"Barbados", "8P", "NA"},
    {"Belarus", "EU EV EW", "EU"},
    {"Belgium", "ON OQ OT", "EU"},
    {"Belize", "V3", "NA"},
    {"Benin", "TY", "AF"},
    {"Bermuda", "VP9", "NA"},
    {"Bhutan", "A5", "AS"},
    {"Bolivia", "CP", "SA"},
    {"Bonaire", "PJ4", "SA"},
    {"Bosnia & Herzegovina", "E7 T9", "EU"},
    {"Botswana", "A2", "AF"},
    {"Bouvet Island", "3Y0", "AF"},
    {"Brazil", "PP PQ PR PS PT PU PV PW PX PY", "SA"},
    {"British Virgin Islands", "VP2V", "NA"},
    {"Brunei", "V8", "OC"},
    {"Bulgaria", "LZ", "EU"},
    {"Burkina Faso", "XT", "AF"},
    {"Burundi", "9U", "AF"},
    {"Cambodia", "XU", "AS"},
    {"Cameroon", "TJ", "AF"},
    {"Campbell Island", "ZL9", "OC"},
    {"Canada", "VA VB VC VD VE VF VG VO VX VY", "NA"},
    {"Canary Islands", "EA8", "AF"},
    {"Cape Verde", "D4", "AF"},
    {"Cayman Islands", "ZF", "NA"},
    {"Central African Republic", "TL", "AF"},
    {"Central Kiribati", "T31", "OC"},
    {"Ceuta & Melilla", "EA9", "AF"},
    {"Chad", "TT", "AF"},
    {"Chagos Islands", "VQ9", "AF"},
    {"Chatham Islands", "ZL7", "OC"},
    {"Chile", "CE", "SA"},
    {"China", "BY BA BG BH BI BJ BT B", "AS"},
    {"Christmas Island", "VK9X", "OC"},
    {"Cocos (Keeling) Islands", "VK9C", "OC"},
    {"Cocos Island", "TI9", "NA"},
    {"Colombia", "HK", "SA"},
    {"Comoros", "D6", "AF"},
    {"Cook Islands", "E5", "OC"},
    {"Corsica", "TK", "EU"},
    {"Costa Rica", "TI", "NA"},
    {"Crete", "SV9", "EU"},
    {"Croatia", "9A", "EU"},
    {"Cuba", "CM CO", "NA"},
    {"Curacao", "PJ2", "SA"},
    {"Cyprus", "5B", "AS"},
    {"Czech Republic", "OK OL", "EU"},
    {"Denmark", "OU OZ", "EU"},
    {"Desecheo Island", "KP5", "NA"},
    {"Djibouti", "J2", "AF"},
    {"Dodecanese Islands", "SV5", "EU"},
    {"Dominica", "J7", "NA"},
    {"Dominican Republic", "HI", "NA"},
    {"DR Congo", "9Q 9R 9S 9T", "AF"},
    {"East Malaysia", "9M6 9M8", "AS"},
    {"Easter Island", "CE0Y", "SA"},
    {"Eastern Kiribati", "T32", "OC"},
    {"Ecuador", "HC", "SA"},
    {"Egypt", "SU", "AF"},
    {"El Salvador", "YS", "NA"},
    {"England", "GB G M", "EU"},
    {"Equatorial Guinea", "3C", "AF"},
    {"Eritrea", "E3", "AF"},
    {"Estonia", "ES", "EU"},
    {"Eswatini", "3DA", "AF"},
    {"Ethiopia", "ET", "AF"},
    {"Falkland Islands", "VP8", "SA"},
    {"Faroe Islands", "OW OY", "EU"},
    {"Finland", "OH", "EU"},
    {"France", "F", "EU"},
    {"French Guiana", "FY", "SA"},
    {"French Polynesia", "FO", "OC"},
    {"French Southern & Antarctic Lands", "FT5", "AF"},
    {"Gabon", "TR", "AF"},
    {"Galapagos Islands", "HC8", "SA"},
    {"Georgia", "4L", "AS"},
    {"German Antarctica", "DP0", "AN"},
    {"Germany", "DA DB DC DD DE DF DG DH DI DJ DK DL DM DN DO DP DQ DR", "EU"},
    {"Ghana", "9G", "AF"},
    {"Gibraltar", "ZB2 ZB", "EU"},
    {"Greece", "SV SW SX SY SZ", "EU"},
    {"Greenland", "OX", "NA"},
    {"Grenada", "J3", "NA"},
    {"Guadeloupe", "FG", "NA"},
    {"Guam", "KH2", "OC"},
    {"Guantanamo Bay", "KG4", "NA"},
    {"Guatemala", "TG", "NA"},
    {"Guernsey", "GU", "EU"},
    {"Guinea", "3X", "AF"},
    {"Guinea-Bissau", "J5", "AF"},
    {"Guyana", "8R", "SA"},
    {"Haiti", "HH", "NA"},
    {"Hawaii", "KH6 KH7", "OC"},
    {"Heard Island", "VK0H", "AF"},
    {"Honduras", "HR", "NA"},
    {"Hong Kong", "VR", "AS"},
    {"Hungary", "HA", "EU"},
    {"Iceland", "TF", "EU"},
    {"India", "VU 8T 8U", "AS"},
    {"Indonesia", "YB YC YD YE YF YG YH 8A 8B 8C 8D 8E 8F 8G 8H 8I", "OC"},
    {"Iran", "EP", "AS"},
    {"Iraq", "YI", "AS"},
    {"Ireland", "EI EJ", "EU"},
    {"Isle of Man", "GD", "EU"},
    {"Israel", "4X 4Z", "AS"},
    {"Italy", "I", "EU"},
    {"Ivory Coast", "TU", "AF"},
    {"Jamaica", "6Y", "NA"},
    {"Jan Mayen", "JX", "EU"},
    {"Japan", "JA JB JC JD JE JF JG JH JI JJ JK JL JM JN JO JP JQ JR JS 7J 7K 7L 7M 7N", "AS"},
    {"Jarvis Island", "KH5J", "OC"},
    {"Jersey", "GJ", "EU"},
    {"Johnston Atoll", "KH3", "OC"},
    {"Jordan", "JY", "AS"},
    {"Juan Fernandez Islands", "CE0Z", "SA"},
    {"Kaliningrad", "UA2", "EU"},
    {"Kazakhstan", "UN UO UP UQ", "AS"},
    {"Kenya", "5Z", "AF"},
    {"Kermadec Islands", "ZL8", "OC"},
    {"Kingman Reef", "KH5K", "OC"},
    {"Kosovo", "Z6", "EU"},
    {"Kure Atoll", "KH7K", "OC"},
    {"Kuwait", "9K", "AS"},
    {"Kyrgyzstan", "EX", "AS"},
    {"Lakshadweep Islands", "VU7", "AS"},
    {"Laos", "XW", "AS"},
    {"Latvia", "YL", "EU"},
    {"Lebanon", "OD", "AS"},
    {"Lesotho", "7P", "AF"},
    {"Liberia", "A8 EL", "AF"},
    {"Libya", "5A", "AF"},
    {"Liechtenstein", "HB0", "EU"},
    {"Lithuania", "LY", "EU"},
    {"Lord Howe Island", "VK9L", "OC"},
    {"Luxembourg", "LX", "EU"},
    {"Macao", "XX9 XX", "AS"},
    {"Macquarie Island", "VK0M", "OC"},
    {"Madagascar", "5R 5S", "AF"},
    {"Madeira", "CT3 CT9", "AF"},
    {"Malawi", "7Q", "AF"},
    {"Malaysia", "9M 9W", "AS"},
    {"Maldives", "8Q", "AS"},
    {"Mali", "TZ", "AF"},
    {"Malta", "9H", "EU"},
    {"Mariana Islands", "KH0", "OC"},
    {"Market Reef", "OJ0", "EU"},
    {"Marshall Islands", "V7", "OC"},
    {"Martinique", "FM", "NA"},
    {"Mauritania", "5T", "AF"},
    {"Mauritius", "3B8", "AF"},
    {"Mayotte", "FH", "AF"},
    {"Mellish Reef", "VK9M", "OC"},
    {"Mexico", "XA XB XC XD XE XF XG XH XI", "NA"},
    {"Micronesia", "V6", "OC"},
    {"Midway Atoll", "KH4", "OC"},
    {"Moldova", "ER", "EU"},
    {"Monaco", "3A", "EU"},
    {"Mongolia", "JT", "AS"},
    {"Montenegro", "4O", "EU"},
    {"Montserrat", "VP2M", "NA"},
    {"Morocco", "CN", "AF"},
    {"Mozambique", "C8 C9", "AF"},
    {"Myanmar", "XY XZ", "AS"},
    {"Namibia", "V5", "AF"},
    {"Nauru", "C2", "OC"},
    {"Navassa Island", "KP1", "NA"},
    {"Nepal", "9N", "AS"},
    {"Netherlands", "PA PB PC PD PE PF PG PH PI", "EU"},
    {"New Caledonia", "FK", "OC"},
    {"New Zealand", "ZL", "OC"},
    {"New Zealand Antarctica", "ZL5", "AN"},
    {"Nicaragua", "YN", "NA"},
    {"Niger", "5U", "AF"},
    {"Nigeria", "5N", "AF"},
    {"Niue", "E6", "OC"},
    {"Norfolk Island", "VK9N", "OC"},
    {"North Cook Islands", "E51", "OC"},
    {"North Korea", "HM P5", "AS"},
    {"North Macedonia", "Z3", "EU"},
    {"Northern Ireland", "GI", "EU"},
    {"Norway", "LA LN", "EU"},
    {"Ogasawara Islands", "JD1", "AS"},
    {"Oman", "A4", "AS"},
    {"Palau", "T8", "OC"},
    {"Palestinian Authority", "E4", "AS"},
    {"Palmyra Atoll", "KH5", "OC"},
    {"Panama", "HP", "NA"},
    {"Papua New Guinea", "P2", "OC"},
    {"Paraguay", "ZP", "SA"},
    {"Peru", "OA OB", "SA"},
    {"Philippines", "DU DW DX DY DZ", "OC"},
    {"Pitcairn Island", "VP6", "OC"},
    {"Poland", "SP SQ SR 3Z", "EU"},
    {"Portugal", "CS CT", "EU"},
    {"Prince Edward & Marion Islands", "ZS8", "AF"},
    {"Puerto Rico", "KP4", "NA"},
    {"Qatar", "A7", "AS"},
    {"Republic of Congo", "TN", "AF"},
    {"Reunion", "FR", "AF"},
    {"Rodriguez Island", "3B9", "AF"},
    {"Romania", "YO YP YQ YR YU", "EU"},
    {"Russia", "RA RB RC RD RE RF RG RK RL RM RN RO RP RQ RT RU RV RW RX RY RZ UA UB UC UD UE UF UG UH UI R",
     "EU"},
    {"Rwanda", "9X", "AF"},
    {"Saba & St. Eustatius", "PJ5 PJ6", "NA"},
    {"Sable Island", "CY0", "NA"},
    {"Samoa", "5W", "OC"},
    {"San Andres & Providencia", "HK0", "NA"},
    {"San Felix & San Ambrosio", "CE0X", "SA"},
    {"San Marino", "T7", "EU"},
    {"Sao Tome & Principe", "S9", "AF"},
    {"Sardinia", "IS0 IS", "EU"},
    {"Saudi Arabia", "HZ 7Z", "AS"},
    {"Scotland", "GM", "EU"},
    {"Senegal", "6W", "AF"},
    {"Serbia", "YT YZ", "EU"},
    {"Seychelles", "S7", "AF"},
    {"Sierra Leone", "9L", "AF"},
    {"Singapore", "9V", "AS"},
    {"Sint Maarten", "PJ7", "NA"},
    {"Slovakia", "OM", "EU"},
    {"Slovenia", "S5", "EU"},
    {"Solomon Islands", "H44 H4", "OC"},
    {"Somalia", "T5 6O", "AF"},
    {"South Africa", "ZR ZS ZT ZU", "AF"},
    {"South Cook Islands", "E50", "OC"},
    {"South Korea", "HL", "AS"},
    {"South Sudan", "Z8", "AF"},
    {"Sovereign Military Order of Malta", "1A", "EU"},
    {"Spain", "AM AN AO EA EB EC ED EE EF EG EH", "EU"},
    {"Sri Lanka", "4S", "AS"},
    {"St. Brandon Islands", "3B7", "AF"},
    {"St. Helena", "ZD7", "AF"},
    {"St. Kitts & Nevis", "V4", "NA"},
    {"St. Lucia", "J6", "NA"},
    {"St. Martin", "FS", "NA"},
    {"St. Paul Island", "CY9", "NA"},
    {"St. Pierre & Miquelon", "FP", "NA"},
    {"St. Vincent & the Grenadines", "J8", "NA"},
    {"Suriname", "PZ", "SA"},
    {"Svalbard", "JW", "EU"},
    {"Sweden", "SA SB SC SD SE SF SG SH SI SJ SK SL SM 7S 8S", "EU"},
    {"Switzerland", "HB", "EU"},
    {"Syria", "YK", "AS"},
    {"Taiwan", "BV BW", "AS"},
    {"Tajikistan", "EY", "AS"},
    {"Tanzania", "5H 5I", "AF"},
    {"Thailand", "HS", "AS"},
    {"The Gambia", "C5", "AF"},
    {"Timor-Leste", "4W", "OC"},
    {"Togo", "5V", "AF"},
    {"Tokelau", "ZKL ZK3 ZK", "OC"},
    {"Tonga", "A3", "OC"},
    {"Trinidad & Tobago", "9Y", "SA"},
    {"Tristan da Cunha", "ZD9", "AF"},
    {"Tunisia", "3V", "AF"},
    {"Turkey", "TA TB TC", "AS"},
    {"Turkmenistan", "EZ", "AS"},
    {"Turks & Caicos Islands", "VP5", "NA"},
    {"Tuvalu", "T2", "OC"},
    {"Uganda", "5X", "AF"},
    {"UK Sovereign Bases Cyprus", "ZC4 ZC", "AS"},
    {"Ukraine", "UR US UT UU UV UW UX UY UZ", "EU"},
    {"United Arab Emirates", "A6", "AS"},
    {"United Nations HQ", "4U1", "NA"},
    {"United States", "K N W", "NA"},
    {"Uruguay", "CX", "SA"},
    {"US Antarctic Bases", "KC4", "AN"},
    {"US Virgin Islands", "KP2", "NA"},
    {"Uzbekistan", "UK", "AS"},
    {"Vanuatu", "YJ", "OC"},
    {"Vatican", "HV", "EU"},
    {"Venezuela", "YV YW YX YY", "SA"},
    {"Vietnam", "XV 3W", "AS"},
    {"Wake Island", "KH9", "OC"},
    {"Wales", "GW", "EU"},
    {"Wallis & Futuna", "FW", "OC"},
    {"West Malaysia", "9M2", "AS"},
    {"Western Kiribati", "T30", "OC"},
    {"Western Sahara", "S0", "AF"},
    {"Willis Island", "VK9W", "OC"},
    {"Yemen", "7O", "AS"},
    {"Zambia", "9I 9J", "AF"},
    {"Zimbabwe", "Z2", "AF"},
};

QHash<QString, const DxccEntity *> buildMap()
{
    QHash<QString, const DxccEntity *> map;
    map.reserve(1024);
    for (const DxccEntity &row : k_entities) {
        const QString prefixes = QString::fromLatin1(row.prefixes);
        for (const QString &prefix : prefixes.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
            Q_ASSERT(!map.contains(prefix));
            map.insert(prefix, &row);
        }
    }
    return map;
}

bool isModifier(const QString &part)
{
    static const QSet<QString> modifierSet = {
        QStringLiteral("MM"), QStringLiteral("AM"),  QStringLiteral("P"),
        QStringLiteral("M"),  QStringLiteral("QRP"), QStringLiteral("A"),
        QStringLiteral("B"),  QStringLiteral("LH"),  QStringLiteral("QRZ"),
    };
    return modifierSet.contains(part);
}

} // namespace

const QHash<QString, const DxccEntity *> &dxccPrefixTable()
{
    static const QHash<QString, const DxccEntity *> table = buildMap();
    return table;
}

QString extractPrefix(const QString &call)
{
    const QString upper = call.toUpper();
    if (upper.isEmpty() || !upper.contains(QLatin1Char('/')))
        return upper;

    const QStringList parts = upper.split(QLatin1Char('/'), Qt::KeepEmptyParts);
    QStringList kept;
    for (const QString &part : parts) {
        if (!isModifier(part))
            kept.append(part);
    }
    if (kept.size() >= 2)
        return kept.at(1).size() < kept.at(0).size() ? kept.at(1) : kept.at(0);
    if (kept.size() == 1)
        return kept.at(0);
    return parts.first();
}

const DxccEntity *dxccEntityForCallsign(const QString &call)
{
    if (call.isEmpty())
        return nullptr;
    QString probe = extractPrefix(call);
    const QHash<QString, const DxccEntity *> &table = dxccPrefixTable();
    // Longest match first; truncating in place keeps this to one copy.
    probe.truncate(4);
    for (qsizetype n = probe.size(); n > 0; --n) {
        probe.truncate(n);
        const auto it = table.constFind(probe);
        if (it != table.constEnd())
            return it.value();
    }
    return nullptr;
}

QString dxEntityForCallsign(const QString &call)
{
    const DxccEntity *entity = dxccEntityForCallsign(call);
    return entity ? QString::fromLatin1(entity->name) : QString();
}

QString dxContinentForCallsign(const QString &call)
{
    const DxccEntity *entity = dxccEntityForCallsign(call);
    if (!entity)
        return {};
    // One entity spans two continents: Russia's call areas 8, 9 and 0 lie in Asia.
    if (qstrcmp(entity->name, "Russia") == 0) {
        const QString prefix = extractPrefix(call);
        const auto digit = std::find_if(prefix.cbegin(), prefix.cend(), [](QChar c) { return c.isDigit(); });
        if (digit != prefix.cend() &&
            (*digit == QLatin1Char('8') || *digit == QLatin1Char('9') || *digit == QLatin1Char('0')))
            return QStringLiteral("AS");
    }
    return QString::fromLatin1(entity->continent);
}

const QStringList &continentCodes()
{
    static const QStringList codes = {QStringLiteral("AF"), QStringLiteral("AN"), QStringLiteral("AS"),
                                      QStringLiteral("EU"), QStringLiteral("NA"), QStringLiteral("OC"),
                                      QStringLiteral("SA")};
    return codes;
}

QString continentName(const QString &code)
{
    static const QHash<QString, QString> names = {
        {QStringLiteral("AF"), QStringLiteral("Africa")},
        {QStringLiteral("AN"), QStringLiteral("Antarctica")},
        {QStringLiteral("AS"), QStringLiteral("Asia")},
        {QStringLiteral("EU"), QStringLiteral("Europe")},
        {QStringLiteral("NA"), QStringLiteral("North America")},
        {QStringLiteral("OC"), QStringLiteral("Oceania")},
        {QStringLiteral("SA"), QStringLiteral("South America")},
    };
    return names.value(code);
}
