// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tools/wmsg/draft.h"
#include "tools/wmsg/files.h"

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace wmsg::cli {

/// The options that say what a new message is, which every subcommand that makes one has.
class MessageOptions {
public:
    void addTo(CLI::App &command);

    [[nodiscard]] bool hasContent() const;
    [[nodiscard]] bool hasRecipient() const;
    [[nodiscard]] bool hasExpiry() const { return !m_expiry.empty(); }
    /// The most bytes of texts and files, or of a message that is there already.
    [[nodiscard]] qint64 sizeLimit() const { return m_sizeLimit; }

    /// The message that is asked for, as a PDU of that type.
    [[nodiscard]] DraftRequest request(quint8 pduType) const;

    /// The options that have no place when the message is there already.
    [[nodiscard]] const std::vector<CLI::Option *> &contentOptions() const { return m_options; }

private:
    using Strings = std::vector<std::string>;

    void addContent(CLI::App &command);
    void addHeader(CLI::App &command);
    void addReport(CLI::App &command, const std::string &name, const std::string &what,
                   std::optional<bool> &wanted);
    CLI::Option *add(CLI::Option *option);

    Strings m_to;
    Strings m_cc;
    Strings m_bcc;
    std::string m_from;
    std::string m_subject;
    Strings m_texts;
    Strings m_textFiles;
    Strings m_files;
    bool m_hasNoPresentation = false;
    std::string m_date;
    std::string m_expiry;
    std::optional<bool> m_deliveryReport;
    std::optional<bool> m_readReport;
    std::string m_priority = "normal";
    std::string m_messageClass = "personal";
    std::string m_appId;
    qint64 m_sizeLimit = kDefaultSizeLimit;
    std::vector<CLI::Option *> m_options;
};

} // namespace wmsg::cli
