// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/tools/wmsg/html_pages.h"
#include "tests/tools/wmsg/program.h"

#include <QtCore/QStandardPaths>
#include <QtGui/QImage>
#include <QtNetwork/QTcpServer>
#include <QtNetwork/QTcpSocket>

namespace {

/// A web server on this machine that counts who asks, and answers with a picture.
class CountingServer : public QTcpServer {
public:
    CountingServer()
    {
        QVERIFY(listen(QHostAddress::LocalHost));
        connect(this, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket *peer = nextPendingConnection()) {
                ++hits;
                peer->disconnectFromHost();
                connect(peer, &QTcpSocket::disconnected, peer, &QObject::deleteLater);
            }
        });
    }
    [[nodiscard]] QByteArray address() const
    {
        return "http://127.0.0.1:" + QByteArray::number(serverPort());
    }
    int hits = 0;
};

QString browser()
{
    for (const char *name : {"chromium-headless-shell", "chromium", "chrome-headless-shell"}) {
        const QString found = QStandardPaths::findExecutable(name);
        if (!found.isEmpty()) {
            return found;
        }
    }
    return {};
}

QByteArray pngOf(const QColor &colour, QSize size, int quality = -1)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG", quality);
    return bytes;
}

/// What tries to run as a script, to fetch or to leave, in every form that a text may be taken for.
QByteArray attackOn(const CountingServer &server)
{
    const QByteArray url = server.address();
    return "\"'></p></title></style><script>document.title='owned'</script>"
           "<img src=x onerror=\"document.title='owned'\">"
           "<img src="
        + url + "/img><link rel=stylesheet href=" + url
        + "/css>"
          "<style>@import '"
        + url + "/import';body{background:url(" + url
        + "/background)}</style>"
          "<iframe src="
        + url + "/frame></iframe><object data=" + url
        + "/object></object>"
          "<meta http-equiv=refresh content='0;url="
        + url
        + "/refresh'>"
          "<svg onload=\"document.title='owned'\"><image href="
        + url
        + "/svg></svg>"
          "<audio src="
        + url
        + "/audio autoplay></audio>"
          "<form action="
        + url + "/form><input autofocus onfocus=\"document.title='owned'\"></form>";
}

/// As that, short enough for the name of a part.
QByteArray shortAttackOn(const CountingServer &server)
{
    return "\"'><script>document.title='owned'</script><img src=" + server.address()
        + "/a onerror=\"document.title='owned'\">";
}

QByteArray escaped(QByteArray text)
{
    return text.replace('&', "&amp;").replace('<', "&lt;").replace('"', "&quot;");
}

QByteArray hostileDrawing(const CountingServer &server)
{
    return "<svg xmlns='http://www.w3.org/2000/svg' onload=\"document.title='owned'\"><image href='"
        + server.address() + "/a'/><script>document.title='owned'</script></svg>";
}

/// Presentations whose attributes attack.
QByteArray hostileSmil(const QString &place, const CountingServer &server)
{
    const QByteArray quoted = escaped(attackOn(server));
    if (place == "region") {
        return "<smil><head><layout><root-layout width=\"" + quoted + "\" background-color=\""
            + quoted + "\"/><region id=\"" + quoted + "\" left=\"" + quoted
            + "\"/></layout></head><body><par dur=\"" + quoted + "\"><text src=\"m.txt\" region=\""
            + quoted + "\" alt=\"" + quoted + "\"/></par></body></smil>";
    }
    if (place == "style") {
        const QByteArray style = "0;background:url(" + server.address() + "/s)}*{background:url("
            + server.address() + "/t)}";
        return "<smil><head><layout><root-layout width='9' height='9' background-color='" + style
            + "'/><region id='a' left='" + style + "' width='" + style + "' z-index='" + style
            + "' fit='" + style + "'/></layout></head><body><par dur='" + style
            + "'><text src='m.txt' region='a'/></par></body></smil>";
    }
    QByteArray media;
    for (const QByteArray &source :
         {server.address() + "/smil", QByteArray("javascript:document.title='owned'"),
          "data:text/html," + quoted, "//" + server.address().mid(7) + "/x", quoted}) {
        media += "<img src=\"" + source + "\"/><ref src=\"" + source
            + "\" region='Image'/><audio src=\"" + source + "\"/><video src=\"" + source + "\"/>";
    }
    return smilOf("<par>" + media + "</par>");
}

/// A message that attacks from one place. It shows a text with the word "marker".
Letter hostileLetter(const QString &place, const CountingServer &server)
{
    const QByteArray attack = attackOn(server);
    Letter letter{{partOf("text/plain", "marker", QString(), "m.txt")}};
    if (place == "subject") {
        letter.subject = attack;
    } else if (place == "text") {
        letter.parts += partOf("text/plain", attack);
    } else if (place == "page") {
        letter.parts += partOf("text/html", attack, QString(), "a.html");
        letter.parts.prepend(smilPart(smilOf("<par><ref src='a.html' region='Text'/>"
                                             "<img src='a.html' region='Image'/></par>")));
    } else if (place == "drawing") {
        const QByteArray drawing = hostileDrawing(server);
        letter.parts += partOf("image/svg+xml", drawing, QString(), "a.svg");
        letter.parts += partOf("image/png", drawing, QString(), "b.png");
        letter.parts += partOf("application/octet-stream", drawing, QString(), "c");
    } else if (place == "name") {
        const QString brief = shortAttackOn(server);
        const QByteArray picture = pngOf(Qt::red, {9, 9});
        letter.parts += partOf("image/png", picture, QString(), brief);
        letter.parts += partOf("image/" + brief, picture, brief);
        letter.to = brief + " <a@b>";
    } else {
        letter.parts.prepend(
            smilPart(place == "presentation" ? attack : hostileSmil(place, server)));
    }
    return letter;
}

} // namespace

/// The pages as a browser shows them, without a window and without a network.
class TestHtmlBrowser : public QObject {
    Q_OBJECT

private slots:
    void initTestCase();
    void theTestCanFail();
    void slide();
    void attacks_data();
    void attacks();
    void hugePicture();
    void narrow();
    void dark();
    void playing();

private:
    QByteArray run(const QString &page, const QStringList &options);
    QString dumped(const QString &page) { return QString::fromUtf8(run(page, {"--dump-dom"})); }
    QImage pictured(const QString &page, QSize size = {800, 1200}, const QStringList &options = {});
    QString pageOf(const Letter &letter, const QString &name);

    QString m_browser;
    Desk m_desk;
};

void TestHtmlBrowser::initTestCase()
{
    m_browser = browser();
    if (m_browser.isEmpty()) {
        QSKIP("there is no Chromium; scripts/install-deps installs one");
    }
}

QByteArray TestHtmlBrowser::run(const QString &page, const QStringList &options)
{
    QProcess process;
    process.setStandardErrorFile(m_desk.path("browser.log"));
    // Root may not use the sandbox of the browser, and containers have little shared memory.
    process.start(m_browser,
                  QStringList{"--headless", "--no-sandbox", "--disable-gpu",
                              "--disable-dev-shm-usage", "--hide-scrollbars", "--no-first-run",
                              "--disable-background-networking", "--disable-component-update",
                              "--host-resolver-rules=MAP * ~NOTFOUND , EXCLUDE 127.0.0.1",
                              "--user-data-dir=" + m_desk.path("profile"),
                              "--virtual-time-budget=3000"}
                      + options + QStringList{"file://" + page});
    const bool hasEnded =
        QTest::qWaitFor([&] { return process.state() == QProcess::NotRunning; }, 120000);
    if (!hasEnded || process.exitCode() != 0) {
        qWarning("%s", m_desk.read("browser.log").constData());
        return "THE BROWSER FAILED";
    }
    return process.readAllStandardOutput();
}

QImage TestHtmlBrowser::pictured(const QString &page, QSize size, const QStringList &options)
{
    const QString target = page.chopped(5) + ".png";
    QFile::remove(target);
    run(page,
        QStringList{"--screenshot=" + target,
                    QString("--window-size=%1,%2").arg(size.width()).arg(size.height())}
            + options);
    const QImage image(target);
    if (!qEnvironmentVariableIsEmpty("WMSG_SCREENSHOTS")) {
        const QString kept =
            qEnvironmentVariable("WMSG_SCREENSHOTS") + '/' + QFileInfo(target).fileName();
        QFile::remove(kept);
        QFile::copy(target, kept);
    }
    return image.convertToFormat(QImage::Format_RGB32);
}

QString TestHtmlBrowser::pageOf(const Letter &letter, const QString &name)
{
    m_desk.write(name + ".pdu", pduOf(letter));
    const Run run = m_desk.run({"decode", name + ".pdu", "--html", name + ".html", "--force"});
    if (run.exitCode != 0) {
        qWarning("%s", qPrintable(run.err));
        return {};
    }
    return m_desk.path(name + ".html");
}

/// How many pixels have about that colour.
static int pixelsLike(const QImage &image, const QColor &wanted)
{
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            const QColor colour = image.pixelColor(x, y);
            const int off = qAbs(colour.red() - wanted.red())
                + qAbs(colour.green() - wanted.green()) + qAbs(colour.blue() - wanted.blue());
            count += off < 12 ? 1 : 0;
        }
    }
    return count;
}

// What the other tests rule out is seen when it happens.
void TestHtmlBrowser::theTestCanFail()
{
    CountingServer server;
    m_desk.write("bad.html",
                 "<!DOCTYPE html><title>fine</title><p>" + shortAttackOn(server) + "</p>");
    const QString dom = dumped(m_desk.path("bad.html"));
    QVERIFY2(dom.contains("<title>owned</title>"), qPrintable(dom.left(2000)));
    QVERIFY(server.hits > 0);
}

void TestHtmlBrowser::slide()
{
    const QString page =
        pageOf({{smilPart(smilOf("<par dur='5s'><img src='p.png' region='Image'/>"
                                 "<text src='t.txt' region='Text'/></par>"
                                 "<par dur='3s'><img src='q.png' region='Image'/></par>")),
                 partOf("image/png", pngOf(Qt::red, {100, 100}), QString(), "p.png"),
                 partOf("image/png", pngOf(QColor(0, 200, 0), {10, 10}), QString(), "q.png"),
                 partOf("text/plain", "Look at <this> & that", QString(), "t.txt")}},
               "slide");
    const QString dom = dumped(page);
    QVERIFY2(dom.contains("<title>Sunset</title>"), qPrintable(dom.left(2000)));
    QVERIFY(dom.contains("Look at &lt;this&gt; &amp; that</p>"));
    const QImage image = pictured(page);
    QCOMPARE(image.size(), QSize(800, 1200));
    // Each picture fills the width of its screen, which is a slide wide.
    const int red = pixelsLike(image, Qt::red);
    QVERIFY2(red > 150 * 150 && red < 400 * 400, qPrintable(QString::number(red)));
    QVERIFY(pixelsLike(image, QColor(0, 200, 0)) > 150 * 150);
}

void TestHtmlBrowser::attacks_data()
{
    QTest::addColumn<QString>("place");
    for (const char *place : {"subject", "text", "page", "drawing", "name", "presentation",
                              "region", "source", "style"}) {
        QTest::newRow(place) << place;
    }
}

void TestHtmlBrowser::attacks()
{
    QFETCH(QString, place);
    CountingServer server;
    const QString page = pageOf(hostileLetter(place, server), "attack");
    const QString dom = dumped(page);
    QVERIFY2(dom.contains(">marker</p>"), qPrintable(dom.left(2000)));
    QVERIFY(!dom.contains("<title>owned</title>"));
    for (const char *element : {"<script", "<iframe", "<object", "<svg", "<form"}) {
        QVERIFY2(!dom.contains(element), element);
    }
    QVERIFY(!pictured(page).isNull());
    QCOMPARE(server.hits, 0);
}

void TestHtmlBrowser::hugePicture()
{
    const QByteArray picture = pngOf(QColor(200, 0, 200), {1900, 1900}, 100);
    QVERIFY2(picture.size() > 10 << 20, qPrintable(QString::number(picture.size())));
    const QString page =
        pageOf({{smilPart(smilOf("<par dur='5s'><img src='p.png' region='Image'/></par>")),
                 partOf("image/png", picture, QString(), "p.png")}},
               "huge");
    QVERIFY(pixelsLike(pictured(page), QColor(200, 0, 200)) > 150 * 150);
}

// On a phone nothing has to be moved sideways.
void TestHtmlBrowser::narrow()
{
    const QString page =
        pageOf({{smilPart(smilOf("<par dur='5s'><img src='p.png' region='Image'/><text src='t.txt' "
                                 "region='Text'/></par><par><text src='t.txt'/></par>")),
                 partOf("image/png", pngOf(Qt::red, {4000, 100}), QString(), "p.png"),
                 partOf("image/png", pngOf(QColor(0, 200, 0), {4000, 100}), QString(), "alone.png"),
                 partOf("text/plain", QByteArray(2000, 'W'), QString(), "t.txt")},
                QString(300, 'S')},
               "narrow");
    // The screenshot is as wide as the window: a page that is wider would be cut.
    const QImage image = pictured(page, {500, 3000}, {"--force-device-scale-factor=1"});
    QVERIFY(pixelsLike(image, Qt::red) > 100);
    const QByteArray frame =
        "<!DOCTYPE html><body style='margin:0'><iframe id=f width=360 height=3000 "
        "style='border:0' src='narrow.html'></iframe><script>onload=()=>{"
        "document.title=f.contentDocument.documentElement.scrollWidth}</script>";
    m_desk.write("frame.html", frame);
    const QString dom = QString::fromUtf8(
        run(m_desk.path("frame.html"), {"--dump-dom", "--allow-file-access-from-files"}));
    QVERIFY2(dom.contains("<title>360</title>"), qPrintable(dom.left(500)));
}

void TestHtmlBrowser::dark()
{
    const QString page = pageOf({{partOf("text/plain", "Good night")}}, "dark");
    const QImage light = pictured(page);
    const QImage dark = pictured(page, {800, 1200}, {"--blink-settings=preferredColorScheme=0"});
    QVERIFY(qGray(light.pixel(2, 1190)) > 200);
    QVERIFY2(qGray(dark.pixel(2, 1190)) < 60,
             qPrintable(QString::number(qGray(dark.pixel(2, 1190)))));
}

// Played, a slide is seen alone and in its time, and the last one stays.
void TestHtmlBrowser::playing()
{
    const QString page =
        pageOf({{smilPart(smilOf("<par dur='2s'><text src='t.txt' begin='1s'/></par>"
                                 "<par dur='3s'><text src='t.txt'/></par>")),
                 partOf("text/plain", "x", QString(), "t.txt")}},
               "playing");
    QByteArray html = m_desk.read(QFileInfo(page).fileName());
    QVERIFY(html.contains("<input type=\"checkbox\" id=\"play\">"));
    m_desk.write("checked.html", html.replace("id=\"play\">", "id=\"play\" checked>"));
    m_desk.write("frame.html", R"(<!DOCTYPE html><iframe id=f src="checked.html"></iframe><script>
onload = () => {
    const page = f.contentDocument;
    document.title = [500, 1500, 2500, 4900, 9000].map(time => {
        page.getAnimations().forEach(a => { a.pause(); a.currentTime = time; });
        return [...page.querySelectorAll(".s0,.t0_0,.s1")]
            .map(e => f.contentWindow.getComputedStyle(e).visibility[0]).join("");
    }).join(" ");
}</script>)");
    const QString dom = QString::fromUtf8(
        run(m_desk.path("frame.html"), {"--dump-dom", "--allow-file-access-from-files"}));
    QVERIFY2(dom.contains("<title>vhh vvh hhv hhv hhv</title>"), qPrintable(dom.left(500)));
}

QTEST_GUILESS_MAIN(TestHtmlBrowser)
#include "tst_html_browser.moc"
