// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "platform/drmclient/drm_client.h"

#include "platform/drmclient/drm_container_p.h"

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using wmsg::drm::Container;

class File {
public:
    /// Opening does not wait for the other end of a pipe.
    explicit File(const char *path)
        : m_fd(path ? ::open(path, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY) : -1)
    {
    }
    ~File()
    {
        if (m_fd >= 0) {
            ::close(m_fd);
        }
    }
    Q_DISABLE_COPY_MOVE(File)

    /// size returns the bytes of a regular file; -1 for anything else.
    [[nodiscard]] qint64 size() const
    {
        struct stat info = {};
        return m_fd >= 0 && ::fstat(m_fd, &info) == 0 && S_ISREG(info.st_mode) ? info.st_size : -1;
    }

    /// head returns the first bytes, `most` of them if there are as many.
    [[nodiscard]] QByteArray head(qsizetype most) const
    {
        QByteArray bytes(most, Qt::Uninitialized);
        qsizetype size = 0;
        while (size < most) {
            const ssize_t got = ::read(m_fd, bytes.data() + size, static_cast<size_t>(most - size));
            if (got == 0 || (got < 0 && errno != EINTR)) {
                break;
            }
            size += got > 0 ? got : 0;
        }
        bytes.truncate(size);
        return bytes;
    }

private:
    int m_fd;
};

Container containerAt(const char *path)
{
    const File file(path);
    const qint64 size = file.size();
    if (size <= 0) {
        return {};
    }
    const QByteArray head = file.head(qMin<qint64>(size, wmsg::drm::kLongestHead));
    return wmsg::drm::readContainer(head, size);
}

bool isForwardable(DRM_KIND_T kind)
{
    switch (kind) {
    case DRM_KIND_NONE:
    case DRM_KIND_CONTENT_V1:
    case DRM_KIND_CONTENT_V2:
        return true;
    case DRM_KIND_FORWARD_LOCK:
    case DRM_KIND_COMBINED_DELIVERY:
    case DRM_KIND_RIGHTS:
        return false;
    }
    return false;
}

template <size_t Size> void fill(char (&field)[Size], const QByteArray &text)
{
    if (static_cast<size_t>(text.size()) < Size) {
        std::memcpy(field, text.constData(), static_cast<size_t>(text.size()));
    }
}

/// newRecord returns a record on the heap, all of its texts NUL-terminated; null without memory.
DRM_CONTENT_METADATA_T *newRecord(const Container &container)
{
    void *memory = std::calloc(1, sizeof(DRM_CONTENT_METADATA_T));
    auto *record = static_cast<DRM_CONTENT_METADATA_T *>(memory);
    if (record) {
        record->kind = container.kind;
        fill(record->encryption, container.encryption);
        fill(record->contentName, container.contentName);
        fill(record->contentURI, container.contentUri);
        fill(record->contentType, container.contentType);
        fill(record->rightsIssuerURL, container.rightsIssuerUrl);
    }
    return record;
}

/// A URL that does not fit its field is none: a cut one leads elsewhere.
bool hasIssuer(const Container &container)
{
    return !container.rightsIssuerUrl.isEmpty()
        && static_cast<size_t>(container.rightsIssuerUrl.size())
        < sizeof(DRM_CONTENT_METADATA_T::rightsIssuerURL);
}

} // namespace

int DRM_IsDRMFile(const char *path)
{
    return containerAt(path).kind != DRM_KIND_NONE ? 1 : 0;
}

int DRM_CanForward(const char *path)
{
    return isForwardable(containerAt(path).kind) ? 1 : 0;
}

int DRM_HasRightsIssuerURL(const char *path)
{
    return hasIssuer(containerAt(path)) ? 1 : 0;
}

int DRM_GetContentMetaDataInFile(const char *path, int /*option*/, DRM_CONTENT_METADATA_T **record,
                                 unsigned int * /*unused*/)
{
    const Container container = containerAt(path);
    *record = container.kind != DRM_KIND_NONE ? newRecord(container) : nullptr;
    return *record ? 0 : -1;
}
