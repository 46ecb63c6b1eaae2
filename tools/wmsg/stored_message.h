// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <mms/model/wmmsmsg.h>
#include <platform/applog/applog.h>

#include <QtCore/QString>

#include <memory>
#include <optional>

/// Messages of the store, as the program shows and writes them.
namespace wmsg::cli {

/// "inbox", or the number of a folder without a name.
[[nodiscard]] QString folderName(unsigned short folder);

/// The folder of a name or a number; nothing for any other text.
[[nodiscard]] std::optional<unsigned short> folderOf(const QString &name);

/// Listens to the engine as long as it lives, and passes on all that is logged.
class EngineWords {
public:
    EngineWords();
    ~EngineWords();
    EngineWords(const EngineWords &) = delete;
    EngineWords &operator=(const EngineWords &) = delete;

    /// Why the engine refused last; "the store refused" when it has not said anything.
    [[nodiscard]] QString last() const;

private:
    static ssize_t write(void *self, const char *bytes, size_t size);

    struct Closer {
        void operator()(FILE *stream) const { std::fclose(stream); }
    };
    FILE *m_before;
    std::unique_ptr<FILE, Closer> m_stream;
    QString m_last;
};

/// Reads a message of the store; only what it holds is present, in the form of a mail file. The
/// body too when `withBody` is set. False when it cannot be read.
[[nodiscard]] bool readStored(unsigned short id, bool withBody, WMMSMsg &message);

/// Makes the bytes of a mail file of `message`. Returns the problem, or an empty text.
[[nodiscard]] QString mailFileBytes(WMMSMsg &message, QByteArray &bytes);

} // namespace wmsg::cli
