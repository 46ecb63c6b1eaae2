// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "core/log.h"
#include "mms/codec/mms_hdr_s.h"
#include "mms/model/mail_file.h"
#include "mms/model/result_codes.h"
#include "mms/model/wmmsmsg.h"

#include <QtCore/QFile>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

using wmsg::model::kMailFilePrefixSize;
using wmsg::model::MailFilePrefix;

namespace {

/// A descriptor of a regular file, closed with its owner. Links are followed only where O_NOFOLLOW
/// is not set; nothing waits for the other end of a pipe.
class RegularFile {
public:
    RegularFile(const QByteArray &path, int flags)
        : m_fd(path.contains('\0') // the system would take what stands in front of it as the name
                   ? -1
                   : ::open(path.constData(), flags | O_CLOEXEC | O_NONBLOCK, 0666))
    {
        struct stat state;
        if (m_fd >= 0 && (::fstat(m_fd, &state) != 0 || !S_ISREG(state.st_mode))) {
            close();
        } else if (m_fd >= 0) {
            m_size = state.st_size;
        }
    }
    ~RegularFile() { close(); }
    Q_DISABLE_COPY_MOVE(RegularFile)

    [[nodiscard]] bool isOpen() const { return m_fd >= 0; }
    [[nodiscard]] qint64 sizeAtOpening() const { return m_size; }
    bool close()
    {
        const bool closed = m_fd < 0 || ::close(m_fd) == 0;
        m_fd = -1;
        return closed;
    }

    /// How many of `count` bytes the file had.
    int read(char *out, int count) const
    {
        int done = 0;
        while (done < count) {
            const ssize_t got = ::read(m_fd, out + done, static_cast<size_t>(count - done));
            if (got <= 0 && !(got < 0 && errno == EINTR)) {
                break;
            }
            done += got > 0 ? static_cast<int>(got) : 0;
        }
        return done;
    }
    /// Writes both ranges, whole; false with errno set when that fails.
    bool write(iovec first, iovec second) const
    {
        iovec ranges[] = {first, second};
        while (ranges[0].iov_len + ranges[1].iov_len > 0) {
            const ssize_t written = ::writev(m_fd, ranges, 2);
            if (written < 0 && errno == EINTR) {
                continue;
            }
            if (written <= 0) {
                return false;
            }
            auto left = static_cast<size_t>(written);
            for (iovec &range : ranges) {
                const size_t used = std::min(left, range.iov_len);
                range.iov_base = static_cast<char *>(range.iov_base) + used;
                range.iov_len -= used;
                left -= used;
            }
        }
        return true;
    }
    [[nodiscard]] bool sync() const { return ::fsync(m_fd) == 0; }

private:
    int m_fd;
    qint64 m_size = 0;
};

} // namespace

quint32 WMMSMsg::construct(const QString &mailFile, bool decodeBody)
{
    RegularFile file(QFile::encodeName(mailFile), O_RDONLY);
    MailFilePrefix prefix;
    if (!file.isOpen() || file.read(prefix.data(), kMailFilePrefixSize) < kMailFilePrefixSize) {
        logLine(4, "fail to open file");
        return MMS_DECODE_NO_FILE;
    }
    if (wmsg::model::isOldLayout(prefix)) {
        logLine(4, "this mailFile is old version");
        return MMS_DECODE_OLD_FILE;
    }
    setMMSType(wmsg::model::mmsTypeOf(prefix));
    QArray<char> pdu;
    const qint64 size = file.sizeAtOpening() - kMailFilePrefixSize;
    if (size > INT_MAX || !pdu.resize(static_cast<int>(size))) {
        logLine(4, "fail to open file");
        return MMS_DECODE_NO_FILE;
    }
    pdu.truncate(file.read(pdu.data(), pdu.size()));
    file.close();
    return decode(pdu, decodeBody, Bytes::Shared);
}

quint32 WMMSMsg::saveAs(const QString &path, int *headerLength, int *bodyLength)
{
    const QByteArray target = QFile::encodeName(path);
    const QByteArray temporary = target + ".tmp";
    RegularFile file(temporary, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW);
    if (!file.isOpen()) {
        return MMS_SAVE_FAIL;
    }
    const quint8 pduType = m_header->msgType;
    m_header->msgType = MMS_PDU_STORED;
    QArray<char> pdu;
    // Kept: after a failed encoding the message stays in the stored form.
    if (const quint32 result = packTo(pdu, nullptr, nullptr); result != MMS_ENCODE_OK) {
        logLine(4, "encode fail,ret:%d", result);
        return result;
    }
    MailFilePrefix prefix = wmsg::model::mailFilePrefix(
        m_mmsType, static_cast<quint32>(m_headerLength), static_cast<quint32>(m_bodyLength));
    errno = 0;
    const bool written =
        file.write({prefix.data(), prefix.size()}, {pdu.data(), static_cast<size_t>(pdu.size())})
        && file.sync() && file.close();
    const int error = errno;
    m_header->msgType = pduType;
    if (!written) {
        return error == ENOSPC ? MMS_SAVE_DISK_FULL : MMS_SAVE_FAIL;
    }
    if (::rename(temporary.constData(), target.constData()) != 0) {
        return MMS_SAVE_FAIL;
    }
    if (headerLength) {
        *headerLength = m_headerLength;
    }
    if (bodyLength) {
        *bodyLength = m_bodyLength;
    }
    return MMS_SAVE_OK;
}
