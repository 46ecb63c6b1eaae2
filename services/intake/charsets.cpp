// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/intake/charsets.h"

#include <QtCore/QString>
#include <QtCore/QStringConverter>

#include <algorithm>
#include <array>
#include <cerrno>

#include <iconv.h>

namespace wmsg::intake {

namespace {

constexpr QByteArrayView kReplacement("\xEF\xBF\xBD");
constexpr QByteArrayView kUtf8Mark("\xEF\xBB\xBF");

struct NumberedCharset {
    quint32 number;
    const char *name; ///< As iconv knows it.
};

// IANA's numbers, in order, for what iconv knows.
constexpr std::array<NumberedCharset, 66> kNumbered = {{
    {3, "US-ASCII"},          {4, "ISO-8859-1"},     {5, "ISO-8859-2"},    {6, "ISO-8859-3"},
    {7, "ISO-8859-4"},        {8, "ISO-8859-5"},     {9, "ISO-8859-6"},    {10, "ISO-8859-7"},
    {11, "ISO-8859-8"},       {12, "ISO-8859-9"},    {13, "ISO-8859-10"},  {17, "SHIFT_JIS"},
    {18, "EUC-JP"},           {36, "EUC-KR"},        {37, "ISO-2022-KR"},  {38, "EUC-KR"},
    {39, "ISO-2022-JP"},      {40, "ISO-2022-JP-2"}, {57, "EUC-CN"},       {81, "ISO-8859-6"},
    {82, "ISO-8859-6"},       {84, "ISO-8859-8"},    {85, "ISO-8859-8"},   {104, "ISO-2022-CN"},
    {105, "ISO-2022-CN-EXT"}, {106, "UTF-8"},        {109, "ISO-8859-13"}, {110, "ISO-8859-14"},
    {111, "ISO-8859-15"},     {112, "ISO-8859-16"},  {113, "GBK"},         {114, "GB18030"},
    {1000, "UTF-16BE"},       {1001, "UCS-4BE"},     {1012, "UTF-7"},      {1013, "UTF-16BE"},
    {1014, "UTF-16LE"},       {1015, "UTF-16"},      {1017, "UTF-32BE"},   {1018, "UTF-32BE"},
    {1019, "UTF-32LE"},       {2009, "IBM850"},      {2010, "IBM852"},     {2011, "IBM437"},
    {2013, "IBM862"},         {2024, "CP932"},       {2025, "GB2312"},     {2026, "BIG5"},
    {2027, "MACINTOSH"},      {2028, "IBM037"},      {2046, "IBM855"},     {2084, "KOI8-R"},
    {2086, "IBM866"},         {2088, "KOI8-U"},      {2101, "BIG5-HKSCS"}, {2109, "CP874"},
    {2250, "CP1250"},         {2251, "CP1251"},      {2252, "CP1252"},     {2253, "CP1253"},
    {2254, "CP1254"},         {2255, "CP1255"},      {2256, "CP1256"},     {2257, "CP1257"},
    {2258, "CP1258"},         {2259, "TIS-620"},
}};

// Names that iconv does not know, or that mean one of the charsets with rules of their own.
struct NamedCharset {
    const char *name; ///< In lower case.
    quint32 number;
};
constexpr std::array<NamedCharset, 22> kNamed = {{
    {"us-ascii", 3},
    {"ascii", 3},
    {"utf-8", 106},
    {"utf8", 106},
    {"ucs2", 1000},
    {"ucs-2", 1000},
    {"iso-10646-ucs-2", 1000},
    {"csunicode", 1000},
    {"utf-16be", 1013},
    {"utf16be", 1013},
    {"utf-16le", 1014},
    {"utf16le", 1014},
    {"utf-16", 1015},
    {"utf16", 1015},
    {"unicode", 1015},
    {"utf-32", 1017},
    {"utf-32be", 1018},
    {"utf-32le", 1019},
    {"ucs-4", 1001},
    {"iso-10646-ucs-4", 1001},
    {"ks_c_5601-1987", 38},
    {"x-sjis", 17},
}};

const char *numberedName(quint32 number)
{
    const auto *row = std::lower_bound(
        kNumbered.begin(), kNumbered.end(), number,
        [](const NumberedCharset &charset, quint32 wanted) { return charset.number < wanted; });
    return row != kNumbered.end() && row->number == number ? row->name : nullptr;
}

/// What a name may be made of before it is given to iconv, whose "//" has a meaning of its own.
bool isHarmless(QByteArrayView name)
{
    constexpr qsizetype kLongest = 40;
    return name.size() <= kLongest && std::all_of(name.begin(), name.end(), [](char c) {
               return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')
                   || c == '-' || c == '_' || c == '.' || c == ':' || c == '+';
           });
}

QByteArray iconvName(const Charset &charset)
{
    if (const char *name = numberedName(charset.number)) {
        return name;
    }
    return isHarmless(charset.name) ? charset.name : QByteArray();
}

/// One conversion of iconv to UTF-8.
class Converter {
public:
    explicit Converter(const QByteArray &from)
        : m_handle(from.isEmpty() ? kNone : ::iconv_open("UTF-8", from.constData()))
    {
    }
    ~Converter()
    {
        if (isOpen()) {
            ::iconv_close(m_handle);
        }
    }
    Q_DISABLE_COPY_MOVE(Converter)

    [[nodiscard]] bool isOpen() const { return m_handle != kNone; }

    QByteArray convert(QByteArrayView bytes)
    {
        QByteArray out;
        char *from = const_cast<char *>(bytes.data()); // iconv does not write there
        size_t left = static_cast<size_t>(bytes.size());
        while (left > 0 && step(from, left, out)) { }
        finish(out);
        return out;
    }

private:
    /// Takes what a charset keeps back to see whether an accent follows.
    void finish(QByteArray &out)
    {
        std::array<char, 64> piece;
        char *to = piece.data();
        size_t room = piece.size();
        ::iconv(m_handle, nullptr, nullptr, &to, &room);
        out.append(piece.data(), to - piece.data());
    }
    /// Converts a stretch; false when the rest is the beginning of a character.
    bool step(char *&from, size_t &left, QByteArray &out)
    {
        std::array<char, 4096> piece;
        char *to = piece.data();
        size_t room = piece.size();
        const size_t result = ::iconv(m_handle, &from, &left, &to, &room);
        const int problem = errno;
        out.append(piece.data(), to - piece.data());
        if (result != static_cast<size_t>(-1) || problem == E2BIG) {
            return true;
        }
        // A charset may refuse what it has taken already.
        if (problem == EINVAL || left == 0) {
            return false;
        }
        ++from;
        --left;
        out.append(kReplacement.data(), kReplacement.size());
        return true;
    }

    static inline const iconv_t kNone =
        reinterpret_cast<iconv_t>(-1); // NOLINT(performance-no-int-to-ptr)
    iconv_t m_handle;
};

QByteArray withoutMark(const QByteArray &text)
{
    qsizetype begin = 0;
    while (text.sliced(begin).startsWith(kUtf8Mark)) {
        begin += kUtf8Mark.size();
    }
    return begin == 0 ? text : text.sliced(begin);
}

bool hasUtf16Mark(QByteArrayView bytes)
{
    return bytes.startsWith("\xFE\xFF") || bytes.startsWith("\xFF\xFE");
}

QByteArray fromUtf16(QByteArrayView bytes, bool isLittleEndian)
{
    if (hasUtf16Mark(bytes)) {
        isLittleEndian = bytes.front() == '\xFF';
        bytes = bytes.sliced(2);
    }
    QStringDecoder decode(isLittleEndian ? QStringDecoder::Utf16LE : QStringDecoder::Utf16BE,
                          QStringDecoder::Flag::ConvertInitialBom
                              | QStringDecoder::Flag::Stateless);
    const QString text = decode(bytes.first(bytes.size() & ~qsizetype(1)));
    return withoutMark(text.toUtf8());
}

/// Where the last character begins when it is UTF-8 and was cut; the size when it was not.
qsizetype cutCharacterAt(QByteArrayView bytes)
{
    constexpr qsizetype kLongestCharacter = 4;
    const qsizetype first = std::max<qsizetype>(0, bytes.size() - kLongestCharacter + 1);
    for (qsizetype i = bytes.size() - 1; i >= first; --i) {
        const auto byte = static_cast<quint8>(bytes[i]);
        if (byte >= 0xC2 && byte <= 0xF4) {
            const qsizetype length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : 2;
            return i + length > bytes.size() ? i : bytes.size();
        }
        if (byte < 0x80 || byte >= 0xC0) {
            break;
        }
    }
    return bytes.size();
}

/// windows-1252; the five bytes that it leaves open are the control characters of ISO-8859-1.
QByteArray fromWindows1252(QByteArrayView bytes)
{
    static constexpr std::array<char16_t, 32> kHigh = {
        0x20AC, 0x81,   0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
        0x2039, 0x0152, 0x8D,   0x017D, 0x8F,   0x90,   0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
        0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x9D,   0x017E, 0x0178};
    QString text(bytes.size(), Qt::Uninitialized);
    std::transform(bytes.begin(), bytes.end(), text.begin(), [](char c) {
        const auto byte = static_cast<quint8>(c);
        return QChar(byte >= 0x80 && byte < 0xA0 ? kHigh.at(byte - 0x80) : char16_t(byte));
    });
    return text.toUtf8();
}

QByteArray byLooks(QByteArrayView bytes, bool isDeclaredUtf8)
{
    if (hasUtf16Mark(bytes)) {
        return fromUtf16(bytes, false);
    }
    // A lone byte above 127 at the end of ASCII is a letter of windows-1252, unless UTF-8 was
    // declared.
    const QByteArrayView whole = bytes.first(cutCharacterAt(bytes));
    const bool isCut = whole.size() < bytes.size() && (isDeclaredUtf8 || !isAscii(whole));
    const QByteArrayView text = isCut ? whole : bytes;
    return isUtf8(text) ? withoutMark(text.toByteArray()) : fromWindows1252(bytes);
}

} // namespace

Charset Charset::named(QByteArrayView name)
{
    const QByteArray lower = name.toByteArray().trimmed().toLower();
    for (const NamedCharset &row : kNamed) {
        if (lower == row.name) {
            return {row.number, {}};
        }
    }
    return {0, lower};
}

bool Charset::isUtf16() const
{
    return number == 1000 || (number >= 1013 && number <= 1015);
}

int Charset::width() const
{
    const bool isUtf32 = number == 1001 || (number >= 1017 && number <= 1019);
    return isUtf16() ? 2 : isUtf32 ? 4 : 1;
}

bool Charset::keepsAscii() const
{
    if (!name.isEmpty()) {
        return name.startsWith("iso-8859") || name.startsWith("windows-") || name.startsWith("koi8")
            || name.startsWith("latin");
    }
    const bool isWide = number >= 1000 && number <= 1019;
    const bool hasEscapes =
        number == 37 || number == 39 || number == 40 || number == 104 || number == 105;
    const bool isEbcdic = number == 2028;
    return !isWide && !hasEscapes && !isEbcdic;
}

bool isAscii(QByteArrayView bytes)
{
    constexpr char kEscape = 0x1B;
    return std::none_of(bytes.begin(), bytes.end(),
                        [](char c) { return (c & 0x80) != 0 || c == kEscape; });
}

bool isUtf8(QByteArrayView bytes)
{
    return bytes.isValidUtf8();
}

Charset utf16ByLooks(QByteArrayView bytes)
{
    constexpr quint32 kUtf16Be = 1013;
    constexpr quint32 kUtf16Le = 1014;
    const bool isEven = bytes.size() % 2 == 0;
    while (bytes.endsWith('\0')) {
        bytes.chop(1);
    }
    if (!bytes.contains('\0')) {
        return {};
    }
    std::array<qsizetype, 2> zeros{};
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        zeros.at(size_t(i % 2)) += bytes[i] == 0 ? 1 : 0;
    }
    const qsizetype units = (bytes.size() + 1) / 2;
    if (zeros[1] == 0 && zeros[0] * 2 >= units) {
        return {kUtf16Be, {}};
    }
    const bool isLittle = zeros[0] == 0 && isEven && (zeros[1] + 1) * 2 >= units;
    return isLittle ? Charset{kUtf16Le, {}} : Charset();
}

QByteArray toUtf8(QByteArrayView bytes, const Charset &charset)
{
    if (charset.isUtf16()) {
        constexpr quint32 kUtf16Le = 1014;
        return fromUtf16(bytes, charset.number == kUtf16Le);
    }
    const bool goesByLooks = !charset.isDeclared() || charset.number == Charset::kUtf8
        || charset.number == Charset::kUsAscii;
    const bool isDeclaredUtf8 = charset.number == Charset::kUtf8;
    if (goesByLooks) {
        return byLooks(bytes, isDeclaredUtf8);
    }
    constexpr quint32 kUtf32 = 1017;
    constexpr quint32 kUtf32Le = 1019;
    const bool isLittle =
        charset.number == kUtf32 && bytes.startsWith(QByteArrayView("\xFF\xFE\0\0", 4));
    Converter converter(iconvName(isLittle ? Charset{kUtf32Le, {}} : charset));
    return converter.isOpen() ? withoutMark(converter.convert(bytes)) : byLooks(bytes, false);
}

} // namespace wmsg::intake
