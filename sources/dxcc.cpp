#include "sources/dxcc.h"

#include <QSet>
#include <QStringList>

namespace {

struct EntityRow
{
    const char *name;
    const char *prefixes; // separated by single blanks
};

// Taken as it stands, irregular rows included (AM-AO as Spain, YU as
// Romania, no plain VP2, ...): an absent prefix simply yields no entity.
constexpr EntityRow k_entities[] = {
    {"Afghanistan", "T6 YA"},
    {"African Italy", "IG9 IH9"},
    {"Agalega & St. Brandon Islands", "3B6"},
    {"Aland Islands", "OH0"},
    {"Alaska", "KL"},
    {"Albania", "ZA"},
    {"Algeria", "7R 7T 7U 7V 7W 7X 7Y"},
    {"American Samoa", "KH8"},
    {"Andaman & Nicobar Islands", "VU4"},
    {"Andorra", "C3"},
    {"Angola", "D2 D3"},
    {"Anguilla", "VP2E"},
    {"Annobon Island", "3C0"},
    {"Antigua & Barbuda", "V2"},
    {"Argentina", "LU"},
    {"Armenia", "EK"},
    {"Aruba", "P4"},
    {"Ascension Island", "ZD8"},
    {"Australia", "VK"},
    {"Australian Antarctic Territory", "VK0"},
    {"Austria", "OE"},
    {"Azerbaijan", "4J 4K"},
    {"Azores", "CU"},
    {"Bahamas", "C6"},
    {"Bahrain", "A9"},
    {"Baker & Howland Islands", "KH1"},
    {"Balearic Islands", "EA6"},
    {"Bangladesh", "S2"},
    {"Barbados", "8P"},
    {"Belarus", "EU EV EW"},
    {"Belgium", "ON OQ OT"},
    {"Belize", "V3"},
    {"Benin", "TY"},
    {"Bermuda", "VP9"},
    {"Bhutan", "A5"},
    {"Bolivia", "CP"},
    {"Bonaire", "PJ4"},
    {"Bosnia & Herzegovina", "E7 T9"},
    {"Botswana", "A2"},
    {"Bouvet Island", "3Y0"},
    {"Brazil", "PP PQ PR PS PT PU PV PW PX PY"},
    {"British Virgin Islands", "VP2V"},
    {"Brunei", "V8"},
    {"Bulgaria", "LZ"},
    {"Burkina Faso", "XT"},
    {"Burundi", "9U"},
    {"Cambodia", "XU"},
    {"Cameroon", "TJ"},
    {"Campbell Island", "ZL9"},
    {"Canada", "VA VB VC VD VE VF VG VO VX VY"},
    {"Canary Islands", "EA8"},
    {"Cape Verde", "D4"},
    {"Cayman Islands", "ZF"},
    {"Central African Republic", "TL"},
    {"Central Kiribati", "T31"},
    {"Ceuta & Melilla", "EA9"},
    {"Chad", "TT"},
    {"Chagos Islands", "VQ9"},
    {"Chatham Islands", "ZL7"},
    {"Chile", "CE"},
    {"China", "BY BA BG BH BI BJ BT B"},
    {"Christmas Island", "VK9X"},
    {"Cocos (Keeling) Islands", "VK9C"},
    {"Cocos Island", "TI9"},
    {"Colombia", "HK"},
    {"Comoros", "D6"},
    {"Cook Islands", "E5"},
    {"Corsica", "TK"},
    {"Costa Rica", "TI"},
    {"Crete", "SV9"},
    {"Croatia", "9A"},
    {"Cuba", "CM CO"},
    {"Curacao", "PJ2"},
    {"Cyprus", "5B"},
    {"Czech Republic", "OK OL"},
    {"Denmark", "OU OZ"},
    {"Desecheo Island", "KP5"},
    {"Djibouti", "J2"},
    {"Dodecanese Islands", "SV5"},
    {"Dominica", "J7"},
    {"Dominican Republic", "HI"},
    {"DR Congo", "9Q 9R 9S 9T"},
    {"East Malaysia", "9M6 9M8"},
    {"Easter Island", "CE0Y"},
    {"Eastern Kiribati", "T32"},
    {"Ecuador", "HC"},
    {"Egypt", "SU"},
    {"El Salvador", "YS"},
    {"England", "GB G M"},
    {"Equatorial Guinea", "3C"},
    {"Eritrea", "E3"},
    {"Estonia", "ES"},
    {"Eswatini", "3DA"},
    {"Ethiopia", "ET"},
    {"Falkland Islands", "VP8"},
    {"Faroe Islands", "OW OY"},
    {"Finland", "OH"},
    {"France", "F"},
    {"French Guiana", "FY"},
    {"French Polynesia", "FO"},
    {"French Southern & Antarctic Lands", "FT5"},
    {"Gabon", "TR"},
    {"Galapagos Islands", "HC8"},
    {"Georgia", "4L"},
    {"German Antarctica", "DP0"},
    {"Germany", "DA DB DC DD DE DF DG DH DI DJ DK DL DM DN DO DP DQ DR"},
    {"Ghana", "9G"},
    {"Gibraltar", "ZB2 ZB"},
    {"Greece", "SV SW SX SY SZ"},
    {"Greenland", "OX"},
    {"Grenada", "J3"},
    {"Guadeloupe", "FG"},
    {"Guam", "KH2"},
    {"Guantanamo Bay", "KG4"},
    {"Guatemala", "TG"},
    {"Guernsey", "GU"},
    {"Guinea", "3X"},
    {"Guinea-Bissau", "J5"},
    {"Guyana", "8R"},
    {"Haiti", "HH"},
    {"Hawaii", "KH6 KH7"},
    {"Heard Island", "VK0H"},
    {"Honduras", "HR"},
    {"Hong Kong", "VR"},
    {"Hungary", "HA"},
    {"Iceland", "TF"},
    {"India", "VU 8T 8U"},
    {"Indonesia", "YB YC YD YE YF YG YH 8A 8B 8C 8D 8E 8F 8G 8H 8I"},
    {"Iran", "EP"},
    {"Iraq", "YI"},
    {"Ireland", "EI EJ"},
    {"Isle of Man", "GD"},
    {"Israel", "4X 4Z"},
    {"Italy", "I"},
    {"Ivory Coast", "TU"},
    {"Jamaica", "6Y"},
    {"Jan Mayen", "JX"},
    {"Japan", "JA JB JC JD JE JF JG JH JI JJ JK JL JM JN JO JP JQ JR JS 7J 7K 7L 7M 7N"},
    {"Jarvis Island", "KH5J"},
    {"Jersey", "GJ"},
    {"Johnston Atoll", "KH3"},
    {"Jordan", "JY"},
    {"Juan Fernandez Islands", "CE0Z"},
    {"Kaliningrad", "UA2"},
    {"Kazakhstan", "UN UO UP UQ"},
    {"Kenya", "5Z"},
    {"Kermadec Islands", "ZL8"},
    {"Kingman Reef", "KH5K"},
    {"Kosovo", "Z6"},
    {"Kure Atoll", "KH7K"},
    {"Kuwait", "9K"},
    {"Kyrgyzstan", "EX"},
    {"Lakshadweep Islands", "VU7"},
    {"Laos", "XW"},
    {"Latvia", "YL"},
    {"Lebanon", "OD"},
    {"Lesotho", "7P"},
    {"Liberia", "A8 EL"},
    {"Libya", "5A"},
    {"Liechtenstein", "HB0"},
    {"Lithuania", "LY"},
    {"Lord Howe Island", "VK9L"},
    {"Luxembourg", "LX"},
    {"Macao", "XX9 XX"},
    {"Macquarie Island", "VK0M"},
    {"Madagascar", "5R 5S"},
    {"Madeira", "CT3 CT9"},
    {"Malawi", "7Q"},
    {"Malaysia", "9M 9W"},
    {"Maldives", "8Q"},
    {"Mali", "TZ"},
    {"Malta", "9H"},
    {"Mariana Islands", "KH0"},
    {"Market Reef", "OJ0"},
    {"Marshall Islands", "V7"},
    {"Martinique", "FM"},
    {"Mauritania", "5T"},
    {"Mauritius", "3B8"},
    {"Mayotte", "FH"},
    {"Mellish Reef", "VK9M"},
    {"Mexico", "XA XB XC XD XE XF XG XH XI"},
    {"Micronesia", "V6"},
    {"Midway Atoll", "KH4"},
    {"Moldova", "ER"},
    {"Monaco", "3A"},
    {"Mongolia", "JT"},
    {"Montenegro", "4O"},
    {"Montserrat", "VP2M"},
    {"Morocco", "CN"},
    {"Mozambique", "C8 C9"},
    {"Myanmar", "XY XZ"},
    {"Namibia", "V5"},
    {"Nauru", "C2"},
    {"Navassa Island", "KP1"},
    {"Nepal", "9N"},
    {"Netherlands", "PA PB PC PD PE PF PG PH PI"},
    {"New Caledonia", "FK"},
    {"New Zealand", "ZL"},
    {"New Zealand Antarctica", "ZL5"},
    {"Nicaragua", "YN"},
    {"Niger", "5U"},
    {"Nigeria", "5N"},
    {"Niue", "E6"},
    {"Norfolk Island", "VK9N"},
    {"North Cook Islands", "E51"},
    {"North Korea", "HM P5"},
    {"North Macedonia", "Z3"},
    {"Northern Ireland", "GI"},
    {"Norway", "LA LN"},
    {"Ogasawara Islands", "JD1"},
    {"Oman", "A4"},
    {"Palau", "T8"},
    {"Palestinian Authority", "E4"},
    {"Palmyra Atoll", "KH5"},
    {"Panama", "HP"},
    {"Papua New Guinea", "P2"},
    {"Paraguay", "ZP"},
    {"Peru", "OA OB"},
    {"Philippines", "DU DW DX DY DZ"},
    {"Pitcairn Island", "VP6"},
    {"Poland", "SP SQ SR 3Z"},
    {"Portugal", "CS CT"},
    {"Prince Edward & Marion Islands", "ZS8"},
    {"Puerto Rico", "KP4"},
    {"Qatar", "A7"},
    {"Republic of Congo", "TN"},
    {"Reunion", "FR"},
    {"Rodriguez Island", "3B9"},
    {"Romania", "YO YP YQ YR YU"},
    {"Russia", "RA RB RC RD RE RF RG RK RL RM RN RO RP RQ RT RU RV RW RX RY RZ UA UB UC UD UE UF UG UH UI R"},
    {"Rwanda", "9X"},
    {"Saba & St. Eustatius", "PJ5 PJ6"},
    {"Sable Island", "CY0"},
    {"Samoa", "5W"},
    {"San Andres & Providencia", "HK0"},
    {"San Felix & San Ambrosio", "CE0X"},
    {"San Marino", "T7"},
    {"Sao Tome & Principe", "S9"},
    {"Sardinia", "IS0 IS"},
    {"Saudi Arabia", "HZ 7Z"},
    {"Scotland", "GM"},
    {"Senegal", "6W"},
    {"Serbia", "YT YZ"},
    {"Seychelles", "S7"},
    {"Sierra Leone", "9L"},
    {"Singapore", "9V"},
    {"Sint Maarten", "PJ7"},
    {"Slovakia", "OM"},
    {"Slovenia", "S5"},
    {"Solomon Islands", "H44 H4"},
    {"Somalia", "T5 6O"},
    {"South Africa", "ZR ZS ZT ZU"},
    {"South Cook Islands", "E50"},
    {"South Korea", "HL"},
    {"South Sudan", "Z8"},
    {"Sovereign Military Order of Malta", "1A"},
    {"Spain", "AM AN AO EA EB EC ED EE EF EG EH"},
    {"Sri Lanka", "4S"},
    {"St. Brandon Islands", "3B7"},
    {"St. Helena", "ZD7"},
    {"St. Kitts & Nevis", "V4"},
    {"St. Lucia", "J6"},
    {"St. Martin", "FS"},
    {"St. Paul Island", "CY9"},
    {"St. Pierre & Miquelon", "FP"},
    {"St. Vincent & the Grenadines", "J8"},
    {"Suriname", "PZ"},
    {"Svalbard", "JW"},
    {"Sweden", "SA SB SC SD SE SF SG SH SI SJ SK SL SM 7S 8S"},
    {"Switzerland", "HB"},
    {"Syria", "YK"},
    {"Taiwan", "BV BW"},
    {"Tajikistan", "EY"},
    {"Tanzania", "5H 5I"},
    {"Thailand", "HS"},
    {"The Gambia", "C5"},
    {"Timor-Leste", "4W"},
    {"Togo", "5V"},
    {"Tokelau", "ZKL ZK3 ZK"},
    {"Tonga", "A3"},
    {"Trinidad & Tobago", "9Y"},
    {"Tristan da Cunha", "ZD9"},
    {"Tunisia", "3V"},
    {"Turkey", "TA TB TC"},
    {"Turkmenistan", "EZ"},
    {"Turks & Caicos Islands", "VP5"},
    {"Tuvalu", "T2"},
    {"Uganda", "5X"},
    {"UK Sovereign Bases Cyprus", "ZC4 ZC"},
    {"Ukraine", "UR US UT UU UV UW UX UY UZ"},
    {"United Arab Emirates", "A6"},
    {"United Nations HQ", "4U1"},
    {"United States", "K N W"},
    {"Uruguay", "CX"},
    {"US Antarctic Bases", "KC4"},
    {"US Virgin Islands", "KP2"},
    {"Uzbekistan", "UK"},
    {"Vanuatu", "YJ"},
    {"Vatican", "HV"},
    {"Venezuela", "YV YW YX YY"},
    {"Vietnam", "XV 3W"},
    {"Wake Island", "KH9"},
    {"Wales", "GW"},
    {"Wallis & Futuna", "FW"},
    {"West Malaysia", "9M2"},
    {"Western Kiribati", "T30"},
    {"Western Sahara", "S0"},
    {"Willis Island", "VK9W"},
    {"Yemen", "7O"},
    {"Zambia", "9I 9J"},
    {"Zimbabwe", "Z2"},
};

QHash<QString, const char *> buildMap()
{
    QHash<QString, const char *> map;
    map.reserve(1024);
    for (const EntityRow &row : k_entities) {
        const QString prefixes = QString::fromLatin1(row.prefixes);
        for (const QString &prefix : prefixes.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
            Q_ASSERT(!map.contains(prefix));
            map.insert(prefix, row.name);
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

const QHash<QString, const char *> &dxccPrefixTable()
{
    static const QHash<QString, const char *> table = buildMap();
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

QString dxEntityForCallsign(const QString &call)
{
    if (call.isEmpty())
        return {};
    QString probe = extractPrefix(call);
    if (probe.isEmpty())
        return {};

    const QHash<QString, const char *> &table = dxccPrefixTable();
    // Longest match first; truncating in place keeps this to one copy.
    probe.truncate(4);
    for (qsizetype n = probe.size(); n > 0; --n) {
        probe.truncate(n);
        const auto it = table.constFind(probe);
        if (it != table.constEnd())
            return QString::fromLatin1(it.value());
    }
    return {};
}
