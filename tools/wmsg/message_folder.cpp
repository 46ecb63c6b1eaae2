// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/message_folder.h"

#include "tools/wmsg/decoded_file.h"
#include "tools/wmsg/field_words.h"
#include "tools/wmsg/part_files.h"
#include "tools/wmsg/report.h"

#include <mms/model/result_codes.h>

#include <QtCore/QFile>

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr int kMostNames = 1000000;

bool makeFile(const QByteArray &path)
{
    Descriptor file(::open(path.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    return file.isOpen() && file.close();
}

bool makeDirectory(const QByteArray &path)
{
    return ::mkdir(path.constData(), 0777) == 0;
}

// What a directory lists is on the disk only when the directory itself is.
bool syncDirectory(const QByteArray &path)
{
    const Descriptor directory(::open(path.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    return directory.isOpen() && ::fsync(directory.get()) == 0;
}

} // namespace

QString MessageFolder::open() const
{
    if (!makeDirectory(m_directory) && errno != EEXIST) {
        return u"cannot be made: "_s + systemError();
    }
    const Descriptor directory(::open(m_directory.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    const bool isOpen = directory.isOpen();
    return isOpen && ::faccessat(directory.get(), ".", W_OK | X_OK, AT_EACCESS) == 0
        ? QString()
        : u"cannot be written to: "_s + systemError();
}

// Takes the first name that is free; whoever makes it has it.
template <typename Make>
QString MessageFolder::takeName(const char *extension, QByteArray &path, Make make)
{
    for (int number = 1; number <= kMostNames; ++number) {
        path = m_directory + "/message-" + QByteArray::number(number) + extension;
        if (make(path)) {
            return {};
        }
        if (errno != EEXIST) {
            return shownName(path) + u": cannot be made: "_s + systemError();
        }
    }
    return shownName(m_directory) + u": is full of messages"_s;
}

QString MessageFolder::saveMessage(const WMMSMsg &message, QByteArray &path)
{
    QString problem = takeName(".mms", path, makeFile);
    if (!problem.isEmpty()) {
        return problem;
    }
    WMMSMsg copy(message); // saving marks fields as present
    const quint32 result = copy.saveAs(QFile::decodeName(path), nullptr, nullptr);
    if (result == MMS_SAVE_OK && syncDirectory(m_directory)) {
        return {};
    }
    ::unlink(path.constData());
    ::unlink((path + ".tmp").constData());
    return u"%1: result %2 (%3)"_s.arg(shownName(path)).arg(result).arg(resultInWords(result));
}

QStringList MessageFolder::saveParts(const WMMSMsg &message, QStringList &written)
{
    QByteArray path;
    QString problem = takeName("", path, makeDirectory);
    if (!problem.isEmpty()) {
        return {problem};
    }
    PartFiles files(path, false, [&written](const QString &line) { written += line; });
    problem = files.open();
    return problem.isEmpty() ? files.save(partsOf(message))
                             : QStringList(shownName(path) + u": "_s + problem);
}

} // namespace wmsg::cli
