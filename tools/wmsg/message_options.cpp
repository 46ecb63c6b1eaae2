// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/message_options.h"

#include "tools/wmsg/field_words.h"

#include <mms/codec/mms_hdr_s.h>

#include <CLI/CLI.hpp>

namespace wmsg::cli {

namespace {

constexpr qint64 kHighestLimit = 1 << 30;

QList<QByteArray> bytesOf(const std::vector<std::string> &strings)
{
    QList<QByteArray> list;
    for (const std::string &string : strings) {
        list.append(QByteArray::fromStdString(string));
    }
    return list;
}

quint8 codeOf(int fieldId, const std::string &key)
{
    return codeOfKey(fieldId, QString::fromStdString(key)).value_or(0);
}

} // namespace

void MessageOptions::addTo(CLI::App &command)
{
    addContent(command);
    addHeader(command);
    command.add_option("--max-size", m_sizeLimit, "Refuse more bytes of texts and files")
        ->check(CLI::Range(qint64(1), kHighestLimit))
        ->type_name("BYTES")
        ->capture_default_str();
}

bool MessageOptions::hasContent() const
{
    return !(m_texts.empty() && m_textFiles.empty() && m_files.empty());
}

bool MessageOptions::hasRecipient() const
{
    return !(m_to.empty() && m_cc.empty() && m_bcc.empty());
}

DraftRequest MessageOptions::request(quint8 pduType) const
{
    DraftRequest request;
    request.to = bytesOf(m_to);
    request.cc = bytesOf(m_cc);
    request.bcc = bytesOf(m_bcc);
    request.from = QByteArray::fromStdString(m_from);
    request.subject = QByteArray::fromStdString(m_subject);
    request.texts = bytesOf(m_texts);
    request.textFiles = bytesOf(m_textFiles);
    request.files = bytesOf(m_files);
    request.pduType = pduType;
    request.hasPresentation = !m_hasNoPresentation;
    request.date = QByteArray::fromStdString(m_date);
    request.expiry = QByteArray::fromStdString(m_expiry);
    request.deliveryReport = m_deliveryReport;
    request.readReport = m_readReport;
    request.priority = codeOf(MMS_FIELD_PRIORITY, m_priority);
    request.messageClass = codeOf(MMS_FIELD_MSG_CLASS, m_messageClass);
    request.appId = QByteArray::fromStdString(m_appId);
    request.sizeLimit = m_sizeLimit;
    return request;
}

CLI::Option *MessageOptions::add(CLI::Option *option)
{
    m_options.push_back(option);
    return option;
}

void MessageOptions::addContent(CLI::App &command)
{
    const auto address = [&](const char *name, Strings &values, const char *help) {
        add(command.add_option(name, values, help))->type_name("ADDRESS");
    };
    // An option that takes one value each time it is given, whatever characters it has.
    const auto values = [&](const char *name, Strings &texts, const char *type, const char *help) {
        add(command.add_option(name, texts, help))
            ->type_name(type)
            ->allow_extra_args(false)
            ->take_all();
    };
    address("--to", m_to, "Recipients: phone numbers or e-mail addresses");
    address("--cc", m_cc, "Recipients of a copy");
    address("--bcc", m_bcc, "Recipients of a copy that the others do not see");
    add(command.add_option("--from", m_from, "Sender; without it the network inserts the address"))
        ->type_name("ADDRESS");
    add(command.add_option("--subject", m_subject, "Subject"))->type_name("TEXT");
    values("--text", m_texts, "TEXT", "A text; may be given again");
    values("--text-file", m_textFiles, "FILE",
           "A text from a file in UTF-8, - is standard input; may be given again");
    add(command.add_option("--attach", m_files, "Pictures, sounds, films and other files"))
        ->type_name("FILE");
    add(command.add_flag("--no-smil", m_hasNoPresentation,
                         "Write no presentation; the parts then have no order in time"));
}

// Two flags, of which one may be given; without either the message says nothing.
void MessageOptions::addReport(CLI::App &command, const std::string &name, const std::string &what,
                               std::optional<bool> &wanted)
{
    auto *yes = add(command.add_flag_callback(
        "--" + name, [&wanted] { wanted = true; }, "Ask for " + what));
    add(command.add_flag_callback(
            "--no-" + name, [&wanted] { wanted = false; }, "Say that no " + what + " are wanted"))
        ->excludes(yes);
}

void MessageOptions::addHeader(CLI::App &command)
{
    add(command.add_option("--date", m_date,
                           "Date: 2024-05-01T12:00:00, with Z or +02:00 behind it, or seconds "
                           "since 1970; now unless given"))
        ->type_name("DATE");
    add(command.add_option("--expiry", m_expiry, "How long it may wait: 90, 15m, 12h, 3d, 1w"))
        ->type_name("DURATION");
    addReport(command, "delivery-report", "delivery reports", m_deliveryReport);
    addReport(command, "read-report", "read reports", m_readReport);
    add(command.add_option("--priority", m_priority, "low, normal or high"))
        ->check(CLI::IsMember({"low", "normal", "high"}))
        ->type_name("PRIORITY")
        ->capture_default_str();
    add(command.add_option("--class", m_messageClass,
                           "personal, advertisement, informational or auto"))
        ->check(CLI::IsMember({"personal", "advertisement", "informational", "auto"}))
        ->type_name("CLASS")
        ->capture_default_str();
    add(command.add_option("--app-id", m_appId, "The application that the message is for"))
        ->type_name("ID");
}

} // namespace wmsg::cli
