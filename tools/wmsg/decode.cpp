// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/decode.h"

#include "tools/wmsg/colours.h"
#include "tools/wmsg/decoded_file.h"
#include "tools/wmsg/files.h"
#include "tools/wmsg/hex_text.h"
#include "tools/wmsg/hex_view.h"
#include "tools/wmsg/html_file.h"
#include "tools/wmsg/html_page.h"
#include "tools/wmsg/log_options.h"
#include "tools/wmsg/message_json.h"
#include "tools/wmsg/message_view.h"
#include "tools/wmsg/part_files.h"
#include "tools/wmsg/report.h"
#include "tools/wmsg/short_message.h"
#include "tools/wmsg/short_message_view.h"
#include "tools/wmsg/text_view.h"

#include <mms/model/result_codes.h>

#include <CLI/CLI.hpp>

#include <QtCore/QJsonDocument>

#include <climits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr qint64 kHighestLimit = INT_MAX - (1 << 16);

struct DecodeOptions {
    std::vector<std::string> files;
    std::string as = "auto";
    bool json = false;
    bool hex = false;
    std::string colour = "auto";
    bool strict = false;
    bool full = false;
    std::string directory;
    std::string page;
    bool force = false;
    qint64 sizeLimit = kDefaultSizeLimit;
    LogOptions log;
};

/// One run of the subcommand over all its files.
class Decoder {
public:
    explicit Decoder(const DecodeOptions &options)
        : m_options(options), m_detail(options.full ? Detail::Full : Detail::Short),
          m_partFiles(QByteArray::fromStdString(options.directory), options.force,
                      [this](const QString &line) { tell(line); })
    {
    }

    int run();

private:
    bool decodeFile(const QByteArray &path);
    bool decodeBytes(DecodedFile &file, const QByteArray &path, bool isFromText);
    bool decodeMessage(DecodedFile &file, const QByteArray &path,
                       const JoinedMessage *around = nullptr);
    [[nodiscard]] bool isShortMessage(const DecodedFile &file, bool isFromText) const;
    bool decodeShortMessage(const ShortMessage &message, const QByteArray &path);
    bool decodePush(const JoinedMessage &message, const QByteArray &path);
    bool tellIncomplete();
    void beginNext();
    void sayJson(const QJsonObject &object);
    void showShortMessage(const JoinedMessage &message, bool isPush);
    void show(DecodedFile &file, const JoinedMessage *around = nullptr);
    void showBytes(DecodedFile &file, const JoinedMessage *around);
    bool savesParts(const DecodedFile &file);
    bool writesPage(const QByteArray &path, const DecodedFile &file);
    void tell(const QString &line) const;
    [[nodiscard]] FileKind kindOfFile(QByteArrayView bytes) const;

    const DecodeOptions &m_options;
    Detail m_detail;
    PartFiles m_partFiles;
    ShortMessageJoiner m_joiner;
    QString m_pageOf; // the message that is on the page
    bool m_isFirst = true;
};

int Decoder::run()
{
    if (!m_options.directory.empty()) {
        const QString problem = m_partFiles.open();
        if (!problem.isEmpty()) {
            complain(QString::fromStdString(m_options.directory) + u": "_s + problem);
            return ExitBadInput;
        }
    }
    bool isFine = true;
    for (const std::string &path : m_options.files) {
        isFine = decodeFile(QByteArray::fromStdString(path)) && isFine;
    }
    isFine = tellIncomplete() && isFine;
    if (isFine && !m_options.page.empty() && m_pageOf.isNull()) {
        complain(shownName(QByteArray::fromStdString(m_options.files.front()))
                 + u": has no multimedia message to show on a page"_s);
        isFine = false;
    }
    return finishOutput() && isFine ? ExitFine : ExitBadInput;
}

bool Decoder::decodeFile(const QByteArray &path)
{
    DecodedFile file;
    file.name = shownName(path);
    QString problem = readInput(path, m_options.sizeLimit, file.bytes);
    if (problem.isEmpty() && file.bytes.isEmpty()) {
        problem = u"is empty"_s;
    }
    if (!problem.isEmpty()) {
        complain(file.name + u": "_s + problem);
        return false;
    }
    const bool mayBeHex = !m_options.strict && (m_options.as == "auto" || m_options.as == "sms");
    const QList<HexLine> lines = mayBeHex ? hexLines(file.bytes.view()) : QList<HexLine>();
    if (lines.isEmpty() && mayBeHex && isPlainText(file.bytes.view())) {
        complain(file.name + u": is a text that spells no message in hex"_s);
        return false;
    }
    if (lines.isEmpty()) {
        return decodeBytes(file, path, false);
    }
    bool isFine = true;
    for (const HexLine &line : lines) {
        DecodedFile one;
        one.name = line.line == 0 ? file.name : u"%1 line %2"_s.arg(file.name).arg(line.line);
        one.bytes = QArray<char>(line.bytes);
        isFine = decodeBytes(one, path, true) && isFine;
    }
    return isFine;
}

bool Decoder::decodeBytes(DecodedFile &file, const QByteArray &path, bool isFromText)
{
    if (!isShortMessage(file, isFromText)) {
        return decodeMessage(file, path);
    }
    ShortMessageResult read = readShortMessage(file.bytes.view());
    if (!read.message) {
        complain(u"%1: %2 at offset %3"_s.arg(file.name, read.problem).arg(read.offset));
        return false;
    }
    read.message->source = file.name;
    return decodeShortMessage(*read.message, path);
}

/// A PDU begins with a field and a push has its type; what else reads as a short message is one.
/// Hex in a text that is nothing of this is a short message that cannot be read.
bool Decoder::isShortMessage(const DecodedFile &file, bool isFromText) const
{
    const QByteArrayView bytes = file.bytes.view();
    if (m_options.strict || m_options.as != "auto") {
        return m_options.as == "sms";
    }
    if (kindOf(bytes) == FileKind::MailFile || bytes.startsWith('\x8C')) {
        return false;
    }
    const bool isElse =
        intake::takeIn(bytes, intake::Origin::File).verdict != intake::Verdict::Unreadable;
    const auto read = readShortMessage(bytes);
    const bool looksLikePush = bytes.size() > 3 && (bytes[1] == 0x06 || bytes[1] == 0x07);
    if (looksLikePush) {
        // The content type of a push stands where the plan of a number does, which is 0 or 1.
        return !isElse && read.message && (read.message->tpdu.address.type & 0x0F) <= 1;
    }
    return read.message || (isFromText && !isElse && (bytes.front() & 0x80) == 0);
}

bool Decoder::decodeShortMessage(const ShortMessage &message, const QByteArray &path)
{
    const auto whole = m_joiner.add(message);
    if (!whole) {
        return true;
    }
    if (whole->isPush()) {
        return decodePush(*whole, path);
    }
    showShortMessage(*whole, false);
    return true;
}

bool Decoder::decodePush(const JoinedMessage &message, const QByteArray &path)
{
    DecodedFile file;
    file.name = message.messages.first().source;
    file.bytes = QArray<char>(message.data());
    if (!m_options.json) {
        showShortMessage(message, true);
    }
    if (file.bytes.isEmpty()) {
        complain(file.name + u": the short message to the port of pushes is empty"_s);
        return false;
    }
    return decodeMessage(file, path, &message);
}

bool Decoder::tellIncomplete()
{
    const QList<JoinedMessage> incomplete = m_joiner.takeIncomplete();
    for (const JoinedMessage &message : incomplete) {
        showShortMessage(message, false);
        complain(u"%1: the message is not whole: there is no part %2"_s.arg(
            message.messages.first().source, message.missingParts()));
    }
    return incomplete.isEmpty();
}

bool Decoder::decodeMessage(DecodedFile &file, const QByteArray &path, const JoinedMessage *around)
{
    file.kind = around ? FileKind::Pdu : kindOfFile(file.bytes);
    show(file, around);
    const bool isDecoded = isMessage(file);
    if (!isDecoded) {
        complain(failureInWords(file));
    }
    const bool isSaved = m_options.directory.empty() || savesParts(file);
    const bool isWritten = m_options.page.empty() || writesPage(path, file);
    return isDecoded && isSaved && isWritten;
}

FileKind Decoder::kindOfFile(QByteArrayView bytes) const
{
    if (m_options.as == "auto") {
        return kindOf(bytes);
    }
    return m_options.as == "mailfile" ? FileKind::MailFile : FileKind::Pdu;
}

void Decoder::beginNext()
{
    if (!m_options.json && !std::exchange(m_isFirst, false)) {
        say(u"\n"_s);
    }
}

void Decoder::sayJson(const QJsonObject &object)
{
    say(QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) + u'\n');
}

void Decoder::showShortMessage(const JoinedMessage &message, bool isPush)
{
    if (m_options.json) {
        sayJson(shortMessageJson(message));
        return;
    }
    if (!m_options.hex) {
        beginNext();
        say(shortMessageView(message, m_detail, isPush));
        return;
    }
    for (const ShortMessage &part : message.messages) {
        beginNext();
        const HexView view(part.bytes, m_detail, wantsColours(m_options.colour));
        say(u"%1: %2\n"_s.arg(printable(part.source), sizeInWords(part.bytes.size())));
        walkShortMessage(part, [&view](const ByteRange &range) { view.print(range); });
    }
}

void Decoder::show(DecodedFile &file, const JoinedMessage *around)
{
    beginNext();
    if (m_options.hex) {
        showBytes(file, around);
        return;
    }
    if (m_options.strict) {
        decode(file);
    } else {
        explain(file);
    }
    if (!m_options.json) {
        say(messageView(file, m_detail));
        return;
    }
    QJsonObject object = messageJson(file);
    if (around) {
        object.insert(u"shortMessages"_s, shortMessagesJson(*around));
    }
    sayJson(object);
}

void Decoder::showBytes(DecodedFile &file, const JoinedMessage *around)
{
    const HexView view(file.bytes, m_detail, wantsColours(m_options.colour));
    const WalkNotes::Sink sink = [&view](const ByteRange &range) {
        view.print(range);
    };
    const QString what = around ? u"%1, user data: %2\n"_s : u"%1: %2\n"_s;
    say(what.arg(printable(file.name), sizeInWords(file.bytes.size())));
    if (m_options.strict) {
        file.walk = PduWalk(sink);
        decode(file);
    } else {
        explain(file, sink);
    }
    say(notesView(file));
}

bool Decoder::savesParts(const DecodedFile &file)
{
    const QStringList problems = m_partFiles.save(partsOf(file.message));
    for (const QString &problem : problems) {
        complain(problem);
    }
    return problems.isEmpty();
}

bool Decoder::writesPage(const QByteArray &path, const DecodedFile &file)
{
    if (!m_pageOf.isNull()) {
        complain(file.name + u": is not on the page, which shows one message: "_s + m_pageOf);
        return false;
    }
    m_pageOf = file.name;
    const QByteArray target = QByteArray::fromStdString(m_options.page);
    HtmlFile page(target, m_options.force, path);
    const QString problem = saveHtmlPage(page, file);
    if (problem.isEmpty()) {
        tell(u"wrote %1, %2"_s.arg(printable(shownName(target)), sizeInWords(page.size())));
    } else {
        complain(shownName(target) + u": "_s + problem);
    }
    return problem.isEmpty();
}

// What is said beside JSON must not get into it.
void Decoder::tell(const QString &line) const
{
    if (m_options.json) {
        std::fprintf(stderr, "%s\n", qPrintable(line));
    } else {
        say(line + u'\n');
    }
}

// What is wrong with the options taken together; empty when nothing is.
QString problemOf(const DecodeOptions &options)
{
    if (options.force && options.directory.empty() && options.page.empty()) {
        return u"--force requires --extract or --html (see wmsg --help)"_s;
    }
    return !options.page.empty() && options.files.size() > 1
        ? u"--html takes one message (see wmsg --help)"_s
        : QString();
}

int runDecode(const DecodeOptions &options)
{
    const QString problem = problemOf(options);
    if (!problem.isEmpty()) {
        complain(problem);
        return ExitUsage;
    }
    LogRoute log;
    return options.log.apply(log) ? Decoder(options).run() : ExitBadInput;
}

} // namespace

void addDecode(CLI::App &program, int &exitCode)
{
    auto options = std::make_shared<DecodeOptions>();
    CLI::App *command =
        program.add_subcommand("decode", "Show what PDUs, mail files and short messages hold");
    command
        ->add_option(
            "FILE", options->files,
            "PDU, push, mail file or short message (also in hex, as a modem's log or a dump has "
            "them), told apart by content; - is standard input")
        ->required()
        ->type_name("");
    command->add_option("--as", options->as, "Take the files as this instead of looking at them")
        ->check(CLI::IsMember({"auto", "pdu", "mailfile", "sms"}))
        ->type_name("KIND")
        ->capture_default_str();
    auto *json =
        command->add_flag("--json", options->json, "Print JSON, one object and line for each file");
    command->add_flag("--hex", options->hex, "Print every byte with its meaning beside it")
        ->excludes(json);
    command->add_option("--color", options->colour, "Colours in the bytes: auto, always, never")
        ->check(CLI::IsMember({"auto", "always", "never"}))
        ->type_name("WHEN")
        ->capture_default_str();
    command->add_flag("--strict", options->strict,
                      "Show what the codec makes of a file, without any repair");
    command->add_flag("--full", options->full, "Cut no texts and lists and fold no data");
    command->add_option("--extract", options->directory, "Save the parts as files in DIR")
        ->type_name("DIR");
    command->add_option("--html", options->page, "Write the message as a page that browsers show")
        ->type_name("FILE");
    command->add_flag("--force", options->force, "Replace files that exist");
    command->add_option("--max-size", options->sizeLimit, "Refuse files with more bytes")
        ->check(CLI::Range(qint64(1), kHighestLimit))
        ->type_name("BYTES")
        ->capture_default_str();
    options->log.addTo(*command);
    command->callback([options, &exitCode] { exitCode = runDecode(*options); });
}

} // namespace wmsg::cli
