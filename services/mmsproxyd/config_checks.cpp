// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "services/mmsproxyd/config_checks.h"

#include "services/common/option_checks.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>
#include <QtCore/QString>
#include <QtCore/QUrl>

#include <algorithm>
#include <optional>

namespace wmsg::proxy {

namespace {

constexpr size_t kLongestText = 255;
constexpr int kLongestUrl = 2000;
constexpr std::chrono::milliseconds kShortestPause = std::chrono::milliseconds(100);
constexpr std::chrono::milliseconds kLongestPause = std::chrono::hours(7 * 24);
constexpr const char *kNoPause = "none";

bool isPrintable(const std::string &text, char lowest)
{
    return std::all_of(text.begin(), text.end(),
                       [lowest](char c) { return c >= lowest && c <= '~'; });
}

/// Seconds, with up to three digits behind a point.
std::optional<std::chrono::milliseconds> pauseOf(const std::string &text)
{
    static const QRegularExpression form(QStringLiteral("\\A[0-9]{1,6}(\\.[0-9]{1,3})?\\z"));
    constexpr int kMilliseconds = 1000;
    const QString seconds = QString::fromStdString(text);
    if (!form.match(seconds).hasMatch()) {
        return std::nullopt;
    }
    const std::chrono::milliseconds pause(qRound64(seconds.toDouble() * kMilliseconds));
    return pause >= kShortestPause && pause <= kLongestPause ? std::optional(pause) : std::nullopt;
}

} // namespace

std::string checkHttpUrl(const std::string &text)
{
    const QUrl url(QString::fromStdString(text), QUrl::StrictMode);
    const QString scheme = url.scheme();
    if (!url.isValid() || !isPrintable(text, '!')) {
        return "this is no URL: " + text;
    }
    if (scheme != QLatin1String("http") && scheme != QLatin1String("https")) {
        return "only http and https URLs will do: " + text;
    }
    if (url.host().isEmpty()) {
        return "the URL names no host: " + text;
    }
    return text.size() <= kLongestUrl ? "" : "the URL is too long";
}

std::string checkSettingsUri(const std::string &uri)
{
    return QString::fromStdString(uri).size() <= kLongestSettingsUri
        ? ""
        : "the answer to applications has room for 60 characters";
}

std::string checkPlainText(const std::string &text)
{
    return isPrintable(text, ' ') && text.size() <= kLongestText
        ? ""
        : "at most 255 printable ASCII characters will do";
}

std::string checkInterface(const std::string &name)
{
    return !name.empty() && isPrintable(name, '!') && name.size() <= kLongestText
        ? ""
        : "this is no name of an interface or host: " + name;
}

std::string checkCertificates(const std::string &path)
{
    constexpr qint64 kMost = qint64(16) * 1024 * 1024; // systems have a quarter of a megabyte
    QFile file(QString::fromStdString(path));
    if (!QFileInfo(file).isFile() || !file.open(QIODevice::ReadOnly)) {
        return "this is no file that can be read: " + path;
    }
    return file.read(kMost).contains("-----BEGIN CERTIFICATE-----")
        ? ""
        : "there is no certificate in " + path;
}

std::string checkPause(const std::string &pause)
{
    return pause == kNoPause || pauseOf(pause)
        ? ""
        : "a pause is a number of seconds, from 0.1 to 604800: " + pause;
}

std::vector<std::chrono::milliseconds> pausesOf(const std::vector<std::string> &pauses)
{
    std::vector<std::chrono::milliseconds> all;
    for (const std::string &text : pauses) {
        if (const auto pause = pauseOf(text)) {
            all.push_back(*pause);
        }
    }
    return all;
}

} // namespace wmsg::proxy
