// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "mms/model/mms_util_tool.h"

#include "core/log.h"

#include <QtCore/QFile>
#include <QtCore/QFileInfo>

#include <algorithm>

namespace {

constexpr unsigned int kLineBytes = 16;

// Kept: 127 is shown as it is, 128 and more as a dot.
char shown(unsigned char byte)
{
    return byte < 32 || byte > 127 ? '.' : static_cast<char>(byte);
}

QByteArray dumpLine(const unsigned char *data, unsigned int count)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    QByteArray line;
    for (unsigned int n = 0; n < kLineBytes; ++n) {
        if (n < count) {
            line += kDigits[data[n] >> 4];
            line += kDigits[data[n] & 15];
            line += ' ';
        } else {
            line += "   ";
        }
    }
    line += QByteArray(10, ' ');
    for (unsigned int n = 0; n < count; ++n) {
        line += shown(data[n]);
    }
    return line;
}

} // namespace

void MMS_UTIL_Tool::logOut(const unsigned char *data, unsigned int size)
{
    if (!data || size == 0) {
        logLine(4, "the pData==NULL || sz==0 ,return");
        return;
    }
    if (!wmsg::log::isPrinted(4)) {
        return;
    }
    logLine(4, "********** MMS data BEGIN **********\n");
    logLine(4, "The data length=%d\n", size);
    for (unsigned int done = 0; done < size;) {
        const unsigned int count = std::min(kLineBytes, size - done);
        logLine(4, "%s\n", dumpLine(data + done, count).constData());
        done += count;
    }
    logLine(4, "********** MMS data END **********\n");
}

void MMS_UTIL_Tool::logOutFrFile(const QString &path)
{
    logLine(4, "print data from file:%s\n", path);
    QFile file(path);
    if (!QFileInfo(path).isFile() || !file.open(QIODevice::ReadOnly)) {
        logLine(4, "File not exists!\n");
        return;
    }
    const QByteArray bytes = file.readAll();
    logOut(reinterpret_cast<const unsigned char *>(bytes.constData()),
           static_cast<unsigned int>(bytes.size()));
}
