// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

// The input is a mail file.

#include "fuzz/fuzz_support.h"
#include "fuzz/message_properties.h"
#include "mms/codec/mms_hdr_s.h"
#include "mms/model/mail_file.h"
#include "mms/model/result_codes.h"

#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>

#include <sys/mman.h>
#include <unistd.h>

using namespace wmsg::fuzz;
using wmsg::model::kMailFilePrefixSize;

namespace {

/// A file that lies in memory alone.
class MemoryFile {
public:
    MemoryFile(const uint8_t *data, size_t size) : m_fd(memfd_create("mail", MFD_CLOEXEC))
    {
        require(m_fd >= 0 && ::write(m_fd, data, size) == static_cast<ssize_t>(size),
                "the fuzzer can make its input a file");
    }
    ~MemoryFile() { ::close(m_fd); }
    MemoryFile(const MemoryFile &) = delete;
    MemoryFile &operator=(const MemoryFile &) = delete;

    [[nodiscard]] QString path() const { return QStringLiteral("/proc/self/fd/%1").arg(m_fd); }

private:
    int m_fd;
};

/// The PDU in a file must decode as it does from memory.
void checkSameAsMemory(const uint8_t *data, size_t size, const WMMSMsg &message, quint32 result)
{
    QArray<char> pdu = bytesOf(data + kMailFilePrefixSize, size - kMailFilePrefixSize);
    WMMSMsg fromMemory;
    require(fromMemory.construct(pdu, true) == result, "a file decodes as its PDU does");
    require(everythingOf(fromMemory.getMultiParts(), true)
                == everythingOf(message.getMultiParts(), true),
            "a file has the parts of its PDU");
    require(message.getMMSType() == data[2], "the MMS type is byte 2 of the file");
}

/// A saved message must read back as itself.
void checkSaved(WMMSMsg message, const QString &path)
{
    message.setPDUType(MMS_PDU_STORED);
    const bool survives = survivesWire(message);
    int headerLength = -1;
    int bodyLength = -1;
    if (message.saveAs(path, &headerLength, &bodyLength) != MMS_SAVE_OK) {
        return;
    }
    QFile file(path);
    require(file.open(QIODevice::ReadOnly)
                && file.size() == kMailFilePrefixSize + headerLength + bodyLength,
            "a saved file is as long as its lengths say");
    if (!survives || (bodyLength == 0 && message.getContentType().needDecode())) {
        return;
    }
    WMMSMsg again;
    require(again.construct(path, true) == MMS_DECODE_OK, "what is saved can be read");
    QArray<char> first;
    QArray<char> second;
    require(message.packTo(first, nullptr, nullptr) == MMS_ENCODE_OK
                && again.packTo(second, nullptr, nullptr) == MMS_ENCODE_OK && first == second,
            "a saved message reads back as it was");
    require(again.getMMSType() == message.getMMSType(), "the MMS type is saved");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const QTemporaryDir folder;
    useOneTimeZone();
    const LogChoice log(size);
    const MemoryFile file(data, size);
    WMMSMsg message;
    const quint32 result = message.construct(file.path(), true);
    if (size < kMailFilePrefixSize) {
        require(result == MMS_DECODE_NO_FILE, "a file without a whole prefix is refused with 102");
    } else if (data[0] == 0 || data[1] == 0) {
        require(result == MMS_DECODE_OLD_FILE, "a file of the old layout is refused with 112");
    } else {
        checkSameAsMemory(data, size, message, result);
    }
    if (result == MMS_DECODE_OK) {
        checkEncoding(message, MMS_PDU_STORED);
        checkSaved(message, folder.filePath(QStringLiteral("saved.mms")));
    }
    return 0;
}
