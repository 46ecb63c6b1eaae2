// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/tools/wmsg/html_pages.h"
#include "tools/wmsg/html_layout.h"
#include "tools/wmsg/html_media.h"
#include "tools/wmsg/html_page.h"
#include "tools/wmsg/html_text.h"
#include "tools/wmsg/report.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QRegularExpression>

using namespace wmsg::cli;

namespace {

QByteArray pageOf(const DecodedFile &file)
{
    QByteArray page;
    HtmlWriter writer([&page](QByteArrayView piece) {
        page.append(piece.data(), piece.size());
        return true;
    });
    writeHtmlPage(writer, file);
    return page;
}

QByteArray pageOf(const QByteArray &pdu)
{
    DecodedFile file;
    file.name = "folder/message.pdu";
    file.bytes = bytesOf(pdu);
    decode(file);
    return pageOf(file);
}

QByteArray pageOf(const Letter &letter)
{
    return pageOf(pduOf(letter));
}

QByteArray between(const QByteArray &text, const QByteArray &begin, const QByteArray &end)
{
    const qsizetype from = text.indexOf(begin);
    const qsizetype to = text.indexOf(end, from + begin.size());
    return from < 0 || to < 0 ? QByteArray("NOT THERE")
                              : text.mid(from + begin.size(), to - from - begin.size());
}

/// What in a page is no markup of ours: a tag or an attribute of other names, an address that is
/// no data of a known kind, a style other than the one whose digest is told. Empty when all is.
QString foreignMarkup(const QByteArray &page)
{
    const QByteArray style = between(page, "<style>", "</style>");
    const QByteArray digest = QCryptographicHash::hash(style, QCryptographicHash::Sha256);
    if (!page.contains("style-src 'sha256-" + digest.toBase64() + "';")) {
        return "the digest of the style is not told";
    }
    if (style.contains('<') || style.contains("url") || style.contains("import")
        || style.contains("\\")) {
        return "style";
    }
    QString html = QString::fromUtf8(page);
    html.remove("<style>" + QString(style) + "</style>");
    html.remove("<!DOCTYPE html>");
    static const QRegularExpression tag("<(/?)([a-z0-9]+)((?: [a-z-]+(?:=\"[^\"<>]*\")?)*)>");
    static const QRegularExpression attribute(" ([a-z-]+)(?:=\"([^\"<>]*)\")?");
    static const QRegularExpression data("^data:(image/(png|jpeg|gif|webp|bmp|vnd.wap.wbmp)|"
                                         "(audio|video)/[a-z0-9-]+);base64,[A-Za-z0-9+/]*=*$");
    static const QSet<QString> tags{
        "html",  "head", "meta", "link",  "title", "body",    "main",   "header",
        "div",   "h1",   "h2",   "p",     "span",  "bdi",     "dl",     "dt",
        "dd",    "ul",   "li",   "br",    "img",   "audio",   "video",  "section",
        "table", "tr",   "td",   "input", "label", "details", "summary"};
    static const QSet<QString> attributes{
        "lang",  "charset", "http-equiv", "content",     "name",        "rel",
        "class", "dir",     "alt",        "controls",    "playsinline", "preload",
        "type",  "id",      "for",        "aria-hidden", "open"};
    qsizetype found = 0;
    for (const QRegularExpressionMatch &match : tag.globalMatch(html)) {
        ++found;
        if (!tags.contains(match.captured(2))) {
            return match.captured();
        }
        for (const QRegularExpressionMatch &pair : attribute.globalMatch(match.captured(3))) {
            const QString name = pair.captured(1);
            const bool isFine = name == "src" ? data.match(pair.captured(2)).hasMatch()
                : name == "href"              ? pair.captured(2) == "data:,"
                                              : attributes.contains(name);
            if (!isFine) {
                return match.captured();
            }
        }
    }
    return html.count('<') == found && html.count('>') == found ? QString() : "a loose < or >";
}

const QByteArray kGif = QByteArray::fromBase64("R0lGODlhAQABAPAAAP8AAAAAACwAAAAAAQABAAACAkQBADs=");

/// A piece of script in every form that markup has been tricked with.
const QByteArray kAttack =
    "\"><script>document.title='owned'</script><img src=x onerror=document.title='owned'>"
    "'><svg/onload=document.title='owned'></style></title><iframe src=javascript:alert(1)>"
    "<!--]]>&lt;script&gt;&#60;script>";

} // namespace

class TestHtmlPage : public QObject {
    Q_OBJECT

private slots:
    void text_data();
    void text();
    void pieces();
    void writerStops();
    void media_data();
    void media();
    void bitmaps();
    void layout();
    void layoutOfHostileNumbers();
    void playing();
    void slides();
    void timesOfMedia();
    void withoutPresentation();
    void brokenPresentation();
    void missingMedia();
    void onNoSlide();
    void header();
    void failure();
    void takenIn();
    void notification();
    void attacks_data();
    void attacks();
    void sourcesAreNeverFetched();
    void markupInParts();
    void repeatedPictures();
    void manySlides();
    void hugePicture();

private:
    LogRoute m_quiet;
};

void TestHtmlPage::text_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("block");
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("attribute");
    const auto row = [](const char *name, const QString &text, const QByteArray &block,
                        const QByteArray &line = {}, const QByteArray &attribute = {}) {
        const QByteArray other = line.isNull() ? block : line;
        QTest::newRow(name) << text << block << other << (attribute.isNull() ? other : attribute);
    };
    row("plain", "Hello, world", "Hello, world");
    row("markup", "<b a='1' c=\"2\">&amp;", "&lt;b a=&#39;1&#39; c=&quot;2&quot;&gt;&amp;amp;");
    row("letters", u"Gr\u00FC\u00DFe \u4F60 \U0001F600"_qs, "Gr\u00FC\u00DFe \u4F60 \U0001F600");
    row("lines", "a\nb\r\nc\rd\te", "a\nb\nc\nd\te", "a\u240Ab\u240Ac\u240Ad\u2409e");
    row("controls", QString(QChar(0)) + QChar(0x1B) + QChar(0x7F) + QChar(0x85),
        "\u2400\u241B\u2421\uFFFD");
    row("half a character", QString(QChar(0xD83D)) + "x" + QChar(0xDE00), "\uFFFDx\uFFFD");
    row("no characters", QString(QChar(0xFFFE)) + QChar(0xFDD0), "\uFFFD\uFFFD");
    row("override", QString("a") + QChar(0x202E) + "gpj.exe", "a\u202Egpj.exe",
        "a<span class=\"mark\">U+202E</span>gpj.exe", "a[U+202E]gpj.exe");
    row("end of an isolate", QString(QChar(0x2069)), "\u2069", "<span class=\"mark\">U+2069</span>",
        "[U+2069]");
    row("joined and right to left", QString(QChar(0x200D)) + QChar(0x200F) + QChar(0x05D0),
        "\u200D\u200F\u05D0");
    row("nothing", "", "");
}

void TestHtmlPage::text()
{
    QFETCH(QString, text);
    QTEST(htmlText(text, HtmlPlace::Block), "block");
    QTEST(htmlText(text, HtmlPlace::Line), "line");
    QTEST(htmlText(text, HtmlPlace::Attribute), "attribute");
}

// Where a text or data is cut into pieces is not seen in the page.
void TestHtmlPage::pieces()
{
    constexpr qsizetype kPiece = 48 * 1024;
    for (qsizetype size = kPiece - 5; size <= kPiece + 5; ++size) {
        const QByteArray head(size, 'x');
        for (const QByteArray &tail : {QByteArray("\u00E9\u4F60\U0001F600"),
                                       QByteArray("\r\n\r\n<"), QByteArray("\xF0\x9F\n", 3)}) {
            QByteArray out;
            HtmlWriter page([&out](QByteArrayView piece) {
                out.append(piece.data(), piece.size());
                return true;
            });
            page.block(head + tail);
            const QString whole = QString::fromUtf8(head + tail);
            QCOMPARE(out.toHex(), htmlText(whole, HtmlPlace::Block).toHex());
            out.clear();
            page.base64(head + tail);
            QCOMPARE(out, (head + tail).toBase64());
        }
    }
}

void TestHtmlPage::writerStops()
{
    int calls = 0;
    HtmlWriter page([&calls](QByteArrayView) { return ++calls < 2; });
    QVERIFY(page.line(u"a").isFine());
    QVERIFY(!page.line(u"b").isFine());
    page.line(u"c").base64(QByteArray(1 << 20, 'x')).block(QByteArray(1 << 20, 'x'));
    QCOMPARE(calls, 2);
    QVERIFY(!page.isFine());
}

void TestHtmlPage::media_data()
{
    QTest::addColumn<QString>("type");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<MediumKind>("kind");
    QTest::addColumn<QString>("embedded");
    const auto row = [](const char *type, MediumKind kind, const char *embedded,
                        const QByteArray &bytes = "x") {
        QTest::addRow("%s %s", type, bytes.left(4).toHex().constData())
            << type << bytes << kind << embedded;
    };
    row("image/png", MediumKind::Picture, "image/png");
    row("IMAGE/JPG", MediumKind::Picture, "image/jpeg");
    row("image/vnd.wap.wbmp", MediumKind::Picture, "image/vnd.wap.wbmp");
    row("audio/amr", MediumKind::Sound, "audio/amr");
    row("application/ogg", MediumKind::Sound, "audio/ogg");
    row("video/3gpp", MediumKind::Film, "video/3gpp");
    row("text/plain", MediumKind::Text, "");
    row("text/html", MediumKind::Text, "");
    row("text/x-vCard", MediumKind::Text, "");
    row("image/svg+xml", MediumKind::Text, "");
    row("application/xhtml+xml", MediumKind::Text, "");
    row("application/vnd.wap.xhtml+xml", MediumKind::Text, "");
    row("application/smil", MediumKind::Text, "");
    row("application/pdf", MediumKind::Other, "");
    row("application/javascript", MediumKind::Other, "");
    row("image/svg", MediumKind::Other, "");
    row("image/png;x", MediumKind::Other, "");
    row("image/png\" onerror=\"x", MediumKind::Other, "");
    row("application/octet-stream", MediumKind::Picture, "image/gif", kGif);
    row("application/octet-stream", MediumKind::Picture, "image/jpeg", "\xFF\xD8\xFF\xE0");
    row("image/*", MediumKind::Picture, "image/png", "\x89PNG\r\n\x1A\n");
    row("*/*", MediumKind::Picture, "image/webp", "RIFF1234WEBPVP8 ");
    row("application/octet-stream", MediumKind::Other, "", "<html><script>");
    row("application/octet-stream", MediumKind::Other, "", "RIFF1234WAVE");
}

void TestHtmlPage::media()
{
    QFETCH(QString, type);
    QFETCH(QByteArray, bytes);
    const HtmlMedium medium = htmlMedium(partOf(type, bytes));
    QTEST(medium.kind, "kind");
    QTEST(QString(medium.type), "embedded");
}

void TestHtmlPage::bitmaps()
{
    // 9 x 2 pixels: a row of white ones, and one with a black pixel at its end.
    const QByteArray bmp = bmpOfWbmp(QByteArray("\x00\x00\x09\x02\xFF\x80\xFF\x00", 8));
    QCOMPARE(bmp.size(), 62 + 2 * 4);
    QCOMPARE(bmp.left(2), "BM");
    QCOMPARE(bmp.mid(18, 8).toHex(), "09000000feffffff");
    QCOMPARE(bmp.mid(54).toHex(),
             "00000000ffffff00"
             "ff800000"
             "ff000000");
    for (const QByteArray &none :
         {QByteArray(), QByteArray("\0\0\1", 3), QByteArray("\1\0\1\1\1", 5),
          QByteArray("\0\0\0\1\1", 5), QByteArray("\0\0\1\2\1", 5), QByteArray("\0\0\x81\x81", 4),
          QByteArray("\0\0\xFF\xFF\x7F\xFF\xFF\x7F\0", 9)}) {
        QCOMPARE(bmpOfWbmp(none), QByteArray());
    }
}

void TestHtmlPage::layout()
{
    const HtmlLayout layout(readSmil(
        "<smil><head><layout><root-layout width='200' height='100' background-color='navy'/>"
        "<region id='a' left='10' top='50%' width='100' height='25' fit='fill'/>"
        "<region id='b' right='20' bottom='10' width='50%' height='10' background-color='#fff' "
        "z-index='3'/><region id='a' width='1'/><region id='none' left='200' width='5'/>"
        "</layout></head></smil>"));
    QCOMPARE(layout.rules(),
             ".laid{aspect-ratio:2.0000}\n"
             ".screen{background:#000080;color:#f9fafb}\n"
             ".r0{left:5.00%;top:50.00%;width:50.00%;height:25.00%;z-index:0}\n"
             ".r0>img,.r0>video{object-fit:fill}\n"
             ".r1{left:40.00%;top:80.00%;width:50.00%;height:10.00%;z-index:3;"
             "background:#ffffff;color:#111827}\n"
             ".r1>img,.r1>video{object-fit:contain}\n");
    QCOMPARE(layout.regionOf("a").value_or(-1), 0);
    QCOMPARE(layout.regionOf("b").value_or(-1), 1);
    QVERIFY(!layout.regionOf("none") && !layout.regionOf("") && layout.isThere());
    QVERIFY(!HtmlLayout(Smil()).isThere());
}

void TestHtmlPage::layoutOfHostileNumbers()
{
    QByteArray smil = "<smil><head><layout><root-layout width='1e99' height='0' "
                      "background-color='red;}body{display:none'/>";
    const QByteArray values[] = {
        "-99999%", "99999999999", "1;x:y", "expression(1)", "url(//x/)", "}*{a:b",   "nan",
        "0x10",    "\xC2\xA0",    "",      "1e5",           "100000%",   "</style>", "@import 'x'",
        "-1",      "\\3c style"};
    for (const QByteArray &value : values) {
        const QByteArray quoted = QByteArray(value).replace('<', "&lt;").replace('\'', "&apos;");
        smil += "<region id='" + quoted + "'";
        for (const char *name : {"left", "top", "width", "height", "right", "bottom", "fit",
                                 "z-index", "background-color"}) {
            smil += ' ' + QByteArray(name) + "='" + quoted + "'";
        }
        smil += "/>";
    }
    for (int number = 0; number < 1000; ++number) {
        smil += "<region id='r" + QByteArray::number(number) + "' left='0'/>";
    }
    smil += "</layout></head></smil>";
    const Smil read = readSmil(smil);
    QCOMPARE(read.problem, QString());
    const HtmlLayout layout(read);
    static const QRegularExpression rule(
        "^\\.(laid\\{aspect-ratio:\\d\\.\\d{4}\\}|r\\d{1,2}\\{left:\\d{1,3}\\.\\d\\d%;top:\\d{1,3}"
        "\\.\\d\\d%;width:\\d{1,3}\\.\\d\\d%;height:\\d{1,3}\\.\\d\\d%;z-index:\\d{1,4}\\}|"
        "r\\d{1,2}>img,\\.r\\d{1,2}>video\\{object-fit:[a-z]+(;object-position:left top)?\\})$");
    const QStringList rules = QString::fromUtf8(layout.rules()).split('\n', Qt::SkipEmptyParts);
    QVERIFY(rules.size() > 100 && rules.size() <= 202);
    for (const QString &line : rules) {
        QVERIFY2(rule.match(line).hasMatch(), qPrintable(line));
    }
}

void TestHtmlPage::playing()
{
    const Smil smil = readSmil(smilOf("<par dur='2s'><img src='a' begin='500ms' end='1s'/></par>"
                                      "<par><text src='b'/></par><par dur='0s'/>"));
    QCOMPARE(playingRules(smil, smil.slides.size()),
             "#play:checked~.slides .s0{animation:on 2000ms linear 0ms 1 none}\n"
             "#play:checked~.slides .s0 .bar{animation:grow 2000ms linear 0ms 1 both}\n"
             "#play:checked~.slides .t0_0{animation:on 500ms linear 500ms 1 none}\n"
             "#play:checked~.slides .s1{animation:on 5000ms linear 2000ms 1 none}\n"
             "#play:checked~.slides .s1 .bar{animation:grow 5000ms linear 2000ms 1 both}\n"
             "#play:checked~.slides .s2{animation:on 500ms linear 7000ms 1 forwards}\n"
             "#play:checked~.slides .s2 .bar{animation:grow 500ms linear 7000ms 1 both}\n");
}

void TestHtmlPage::slides()
{
    const QByteArray page = pageOf(
        {{smilPart(smilOf("<par dur='5s'><img src='p.gif' region='Image' alt='A &lt;sun'/>"
                          "<text src='cid:t' region='Text'/><audio src='s.amr'/></par>"
                          "<par dur='65s'><text src='u.txt'/></par>")),
          partOf("text/plain", "second", QString(), "u.txt"), partOf("text/plain", "first", "<t>"),
          partOf("audio/amr", "#!AMR", QString(), "s.amr"),
          partOf("image/gif", kGif, QString(), "p.gif")}});
    QCOMPARE(foreignMarkup(page), QString());
    const QByteArray first = between(page, "<section class=\"slide s0\">", "</section>");
    QVERIFY(first.contains("<h2>Slide 1 <span class=\"quiet\">5 s</span></h2>"));
    QVERIFY(first.contains("<div class=\"region r0\"><img alt=\"A &lt;sun\" "
                           "src=\"data:image/gif;base64,"
                           + kGif.toBase64() + "\"></div>"));
    QVERIFY(
        first.contains("<div class=\"region r1\"><p class=\"text\" dir=\"auto\">first</p></div>"));
    QVERIFY(first.contains("<div class=\"medium\"><audio controls preload=\"metadata\" "
                           "src=\"data:audio/amr;base64,IyFBTVI=\"></audio></div>"));
    const QByteArray second = between(page, "<section class=\"slide s1\">", "</section>");
    QVERIFY(second.contains("1 min 5 s") && !second.contains("screen laid"));
    QVERIFY(
        second.contains("<div class=\"medium\"><p class=\"text\" dir=\"auto\">second</p></div>"));
    QVERIFY(page.contains("&#9654; Play 2 slides, 1 min 10 s"));
    QVERIFY(!page.contains("On no slide"));
    QVERIFY(page.indexOf("first") < page.indexOf("second"));
}

void TestHtmlPage::timesOfMedia()
{
    const QByteArray page =
        pageOf({{smilPart(smilOf("<par dur='5s'><text src='t.txt' begin='1s' dur='2.5s'/></par>")),
                 partOf("text/plain", "x", QString(), "t.txt")}});
    QVERIFY(page.contains("<div class=\"medium timed t0_0\">"));
    QVERIFY(page.contains("<span class=\"quiet\">, from 1 s to 3.5 s</span>"));
    QVERIFY(!page.contains("id=\"play\""));
}

void TestHtmlPage::withoutPresentation()
{
    const QByteArray page = pageOf({{partOf("text/plain", "one", QString(), "1.txt"),
                                     partOf("image/gif", kGif, QString(), "2.gif"),
                                     parentOf(kMixed, {partOf("text/plain", "three")}),
                                     partOf("application/pdf", "%PDF", QString(), "4.pdf")}});
    QCOMPARE(foreignMarkup(page), QString());
    QVERIFY(!page.contains("<section"));
    const qsizetype places[] = {page.indexOf(">one</p>"), page.indexOf(kGif.toBase64()),
                                page.indexOf(">three</p>"), page.indexOf("cannot be shown")};
    QVERIFY(places[0] > 0);
    QVERIFY(std::is_sorted(std::begin(places), std::end(places)));
    const QByteArray place = "3.1"; // the first of the third
    QVERIFY(page.contains("<tr><td>" + place + "</td><td><bdi>part " + place + "</bdi>"));
    QVERIFY(page.contains("4 parts"));
}

void TestHtmlPage::brokenPresentation()
{
    const Letter cut{{smilPart("<smil><body><par><text src='t.txt'/>"),
                      partOf("text/plain", "here", QString(), "t.txt")}};
    QVERIFY(between(pageOf(cut), "<section", "</section>").contains(">here</p>"));
    QVERIFY(pageOf(cut).contains("the presentation is no proper XML, line 1"));
    const Letter none{
        {smilPart("this is no presentation"), partOf("text/plain", "here", QString(), "t.txt")}};
    QCOMPARE(foreignMarkup(pageOf(none)), QString());
    QVERIFY(pageOf(none).contains(">here</p>"));
    QVERIFY(pageOf(none).contains("this is no presentation</p>"));
}

void TestHtmlPage::missingMedia()
{
    const QByteArray page =
        pageOf({{smilPart(smilOf("<par><img src='gone.gif' region='Image' alt='A cat'/><text/>"
                                 "<img src='empty.gif'/></par>")),
                 partOf("image/gif", "", QString(), "empty.gif")}});
    QCOMPARE(foreignMarkup(page), QString());
    QVERIFY(page.contains("<bdi>gone.gif</bdi> is not in the message<br><bdi>A cat</bdi>"));
    QVERIFY(page.contains("<bdi>empty.gif</bdi> is empty"));
    QVERIFY(page.contains("nothing to show"));
}

void TestHtmlPage::onNoSlide()
{
    const QByteArray page = pageOf({{smilPart(smilOf("<par><text src='t.txt'/></par>")),
                                     partOf("text/plain", "shown", QString(), "t.txt"),
                                     partOf("text/x-vCard", "BEGIN:VCARD", QString(), "c.vcf")}});
    const QByteArray rest = page.mid(page.indexOf("On no slide"));
    QVERIFY(rest.contains(">BEGIN:VCARD</p>"));
    QVERIFY(rest.contains("<bdi>c.vcf</bdi> <span class=\"quiet\">text/x-vCard, 11 bytes</span>"));
    QCOMPARE(page.count(">shown</p>"), 1);
    QVERIFY(!rest.contains(">shown</p>"));
}

void TestHtmlPage::header()
{
    Letter letter{
        {partOf("text/plain", "x")}, "A <b>subject</b>", "+4366012345678", "Ann <ann@example.org>"};
    letter.priority = 130;
    const QByteArray page = pageOf(letter);
    QVERIFY(page.contains("<title>A &lt;b&gt;subject&lt;/b&gt;</title>"));
    QVERIFY(page.contains("<h1><bdi>A &lt;b&gt;subject&lt;/b&gt;</bdi></h1>"));
    QVERIFY(page.contains("<dt>From</dt><dd><span><bdi>+4366012345678</bdi></span></dd>"));
    QVERIFY(page.contains("<dt>To</dt><dd><bdi>Ann</bdi> <span class=\"quiet\">"
                          "<bdi>ann@example.org</bdi></span></dd>"));
    QVERIFY(page.contains("<li>retrieve confirmation</li>\n<li>personal</li>\n"
                          "<li class=\"high\">high priority</li>"));
    QVERIFY(page.contains("<tr><td>Message-ID</td><td><bdi>m1@mmsc</bdi></td></tr>"));
    QVERIFY(page.contains("2024-05-01"));
}

void TestHtmlPage::failure()
{
    const QByteArray whole = pduOf({{partOf("text/plain", "some text", QString(), "t.txt")}});
    const QByteArray page = pageOf(whole.chopped(4));
    QVERIFY(page.contains("<p class=\"card bad\"><bdi>folder/message.pdu: result 111 ("));
    QCOMPARE(foreignMarkup(page), QString());
    QVERIFY(pageOf(whole.left(2)).contains("<h1><bdi>message.pdu</bdi></h1>"));
    for (qsizetype size = 1; size < whole.size(); ++size) {
        QCOMPARE(foreignMarkup(pageOf(whole.left(size))), QString());
    }
}

// What the codec alone does not read is shown as intake reads it, and what was done is told.
void TestHtmlPage::takenIn()
{
    DecodedFile file;
    file.name = "message.pdu";
    QByteArray pdu = pduOf({{partOf("text/plain", "gr\xFC\xDF dich", QString(), "t.txt")}});
    pdu.insert(2, QByteArray("X-<b>\0<i>\0", 10) + "\x9B\x80");
    file.bytes = bytesOf(pdu);
    explain(file);
    QVERIFY(file.result == 100 && file.intake->codecResult != 100);
    const QByteArray page = pageOf(file);
    QCOMPARE(foreignMarkup(page), QString());
    QVERIFY(page.contains(">gr\u00FC\u00DF dich</p>"));
    QVERIFY(!page.contains("card bad"));
    const QByteArray notes = between(page, "<details class=\"card warn\">", "</details>");
    QVERIFY2(notes.contains("repairs</summary>")
                 && notes.contains("<bdi>the codec alone: result 104 ("),
             page.constData());
    QVERIFY(page.contains("<tr><td>Read-Status</td><td><bdi>"));
    file.bytes = bytesOf(pdu.chopped(4));
    explain(file);
    QVERIFY(pageOf(file).contains(" lost</summary>"));
}

void TestHtmlPage::notification()
{
    QFile file(WMSG_TEST_DATA "/pdu/notification.hex");
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray page = pageOf(fromHex(file.readAll()));
    QCOMPARE(foreignMarkup(page), QString());
    QVERIFY(page.contains("<li>notification</li>"));
    QVERIFY(page.contains("<h1><bdi>Hi!</bdi></h1>"));
    QVERIFY(!page.contains("<dt>To"));
    QVERIFY(!page.contains("class=\"thing"));
}

void TestHtmlPage::attacks_data()
{
    QTest::addColumn<Letter>("letter");
    const QString attack = kAttack;
    const auto text = partOf("text/plain", "x", QString(), "t.txt");
    Letter letter{{text}, attack};
    QTest::newRow("subject") << letter;
    letter = {{text}};
    letter.to = attack + " <a@b>";
    QTest::newRow("name of a recipient") << letter;
    letter = {{text}};
    letter.to = attack + '@';
    QTest::newRow("address") << letter;
    QTest::newRow("text") << Letter{{partOf("text/plain", kAttack)}};
    QTest::newRow("location") << Letter{{partOf("text/plain", "x", QString(), attack)}};
    QTest::newRow("id") << Letter{{partOf("image/gif", kGif, attack)}};
    QTest::newRow("media type") << Letter{{partOf("image/" + attack, kGif)}};
    QTest::newRow("page") << Letter{{partOf("text/html", kAttack, QString(), "a.html")}};
    QTest::newRow("drawing") << Letter{{partOf("image/svg+xml", kAttack, QString(), "a.svg")}};
    QTest::newRow("presentation that is none") << Letter{{smilPart(kAttack)}};
    const QByteArray quoted =
        QByteArray(kAttack).replace('&', "&amp;").replace('<', "&lt;").replace('"', "&quot;");
    for (const QByteArray attribute : {"src", "alt", "region", "begin", "id"}) {
        QTest::addRow("attribute %s", attribute.constData())
            << Letter{{smilPart(smilOf("<par><img " + attribute + "=\"" + quoted + "\"/></par>"))}};
    }
    QTest::newRow("regions") << Letter{
        {smilPart("<smil><head><layout><root-layout width=\"" + quoted + "\" background-color=\""
                  + quoted + "\"/><region id=\"a\" left=\"" + quoted + "\" fit=\"" + quoted
                  + "\" z-index=\"" + quoted + "\" background-color=\"" + quoted
                  + "\"/></layout></head><body><par><text src=\"t.txt\" region=\"a\"/></par>"
                    "</body></smil>"),
         text}};
}

void TestHtmlPage::attacks()
{
    QFETCH(Letter, letter);
    const QByteArray page = pageOf(letter);
    QCOMPARE(foreignMarkup(page), QString());
    QVERIFY(!page.contains("<script") && !page.contains("<iframe") && !page.contains("<svg"));
}

void TestHtmlPage::sourcesAreNeverFetched()
{
    QByteArray media;
    for (const char *source :
         {"http://example.org/a.gif", "https://x/", "//x/y", "javascript:x()", "JaVaScRiPt:x()",
          "data:text/html,<b>", "file:///etc/passwd", "ftp://x", "cid:http://x", " \thttp://x"}) {
        media += "<img src=\"" + QByteArray(source).replace('<', "&lt;") + "\"/>";
        media += "<ref src=\"" + QByteArray(source).replace('<', "&lt;") + "\" region=\"Image\"/>";
    }
    const QByteArray page = pageOf({{smilPart(smilOf("<par>" + media + "</par>"))}});
    QCOMPARE(foreignMarkup(page), QString());
    QVERIFY(!page.contains("<img") && !page.contains("<video"));
    QCOMPARE(between(page, "<div class=\"slides\">", "<ul").count("is not in the message<"), 20);
}

void TestHtmlPage::markupInParts()
{
    const QByteArray html = "<html><body onload=\"x()\"><a href='http://x'>y</a></body></html>";
    for (const char *type : {"text/html", "application/xhtml+xml", "image/svg+xml", "text/xml"}) {
        const QByteArray page =
            pageOf({{smilPart(smilOf("<par><img src='p' region='Image'/></par>")),
                     partOf(type, html, QString(), "p")}});
        QCOMPARE(foreignMarkup(page), QString());
        QVERIFY(page.contains(">" + htmlText(QString(html), HtmlPlace::Block) + "</p>"));
    }
}

// A picture that many slides show is embedded again while it is small, and else named.
void TestHtmlPage::repeatedPictures()
{
    QByteArray slides;
    for (int number = 0; number < 150; ++number) {
        slides += "<par dur='1s'><img src='p.gif' region='Image'/></par>";
    }
    const QByteArray picture = kGif + QByteArray(300 * 1024, 'x');
    const QByteArray pdu =
        pduOf({{smilPart(smilOf(slides)), partOf("image/gif", picture, QString(), "p.gif")}});
    const QByteArray page = pageOf(pdu);
    QCOMPARE(page.count("<img"), 2); // once, and once more within the size of the message
    QCOMPARE(page.count("<bdi>p.gif</bdi> is shown above"), 148);
    QVERIFY(page.size() < 4 * pdu.size());
}

void TestHtmlPage::manySlides()
{
    const QByteArray slide = "<par><img src='p'/></par>";
    QByteArray page = pageOf(
        {{smilPart(smilOf(slide.repeated(30000))), partOf("text/plain", "x", QString(), "p")}});
    QCOMPARE(foreignMarkup(page), QString());
    QCOMPARE(page.count("<section"), 200);
    QVERIFY(page.contains("<p class=\"note\">and 29800 slides more</p>"));
    page = pageOf(
        {{smilPart(smilOf("<par>" + QByteArray("<img src='p'/>").repeated(30000) + "</par>")),
          partOf("text/plain", "x", QString(), "p")}});
    QCOMPARE(page.count("<div class=\"medium\">"), 50);
    QVERIFY(page.contains("<p class=\"note\">and 29950 media more</p>"));
}

// The picture is written piece by piece: no piece of the page is large.
void TestHtmlPage::hugePicture()
{
    DecodedFile file;
    const QByteArray picture = "\xFF\xD8\xFF" + QByteArray(10 << 20, 'p');
    file.bytes = bytesOf(pduOf({{partOf("image/jpeg", picture, QString(), "p.jpg")}}));
    decode(file);
    qsizetype largest = 0;
    qint64 size = 0;
    HtmlWriter writer([&](QByteArrayView piece) {
        largest = std::max(largest, piece.size());
        size += piece.size();
        return true;
    });
    writeHtmlPage(writer, file);
    QVERIFY2(largest <= 64 * 1024, qPrintable(QString::number(largest)));
    const QByteArray page = pageOf(file.bytes.view().toByteArray());
    QVERIFY(page.contains("data:image/jpeg;base64," + picture.toBase64() + "\">"));
    QVERIFY(size > (10 << 20) * 4 / 3 && size < (10 << 20) * 4 / 3 + 100000);
}

QTEST_GUILESS_MAIN(TestHtmlPage)
#include "tst_html_page.moc"
