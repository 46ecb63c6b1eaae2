// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/decode.h"

#include "tools/wmsg/decoded_file.h"
#include "tools/wmsg/files.h"
#include "tools/wmsg/hex_view.h"
#include "tools/wmsg/html_file.h"
#include "tools/wmsg/html_page.h"
#include "tools/wmsg/log_options.h"
#include "tools/wmsg/message_json.h"
#include "tools/wmsg/message_view.h"
#include "tools/wmsg/part_files.h"
#include "tools/wmsg/report.h"
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
    void show(DecodedFile &file);
    bool savesParts(const DecodedFile &file);
    bool writesPage(const QByteArray &path, const DecodedFile &file);
    void tell(const QString &line) const;
    [[nodiscard]] FileKind kindOfFile(QByteArrayView bytes) const;

    const DecodeOptions &m_options;
    Detail m_detail;
    PartFiles m_partFiles;
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
    file.kind = kindOfFile(file.bytes);
    show(file);
    const bool isDecoded = file.result == MMS_DECODE_OK;
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
    return m_options.as == "pdu" ? FileKind::Pdu : FileKind::MailFile;
}

void Decoder::show(DecodedFile &file)
{
    if (!m_options.json && !std::exchange(m_isFirst, false)) {
        say(u"\n"_s);
    }
    if (m_options.hex) {
        const HexView view(file.bytes, m_detail);
        say(u"%1: %2\n"_s.arg(printable(file.name), sizeInWords(file.bytes.size())));
        file.walk = PduWalk([&view](const ByteRange &range) { view.print(range); });
        decode(file);
        say(warningsView(file.walk));
        return;
    }
    decode(file);
    if (m_options.json) {
        say(QString::fromUtf8(QJsonDocument(messageJson(file)).toJson(QJsonDocument::Compact))
            + u'\n');
    } else {
        say(messageView(file, m_detail));
    }
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
    CLI::App *command = program.add_subcommand("decode", "Show what PDUs and mail files hold");
    command
        ->add_option("FILE", options->files,
                     "PDU or mail file, told apart by content; - is standard input")
        ->required()
        ->type_name("");
    command->add_option("--as", options->as, "Take the files as this instead of looking at them")
        ->check(CLI::IsMember({"auto", "pdu", "mailfile"}))
        ->type_name("KIND")
        ->capture_default_str();
    auto *json =
        command->add_flag("--json", options->json, "Print JSON, one object and line for each file");
    command->add_flag("--hex", options->hex, "Print every byte with its meaning beside it")
        ->excludes(json);
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
