// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/platform_export.h"

#include <cstddef>

/// The DRM client service: what a file protected by OMA DRM is, and what its rights allow.
///
/// Here it reads the containers themselves, told apart by their content and never by their name:
/// DRM messages, DRM content of version 1 and 2, and rights objects as XML and as binary XML;
/// docs/formats/drm-containers.md has the bytes. It keeps no rights and decrypts nothing. The head
/// of a file is read, at most 256 KiB, whatever its size. What is no regular file is not read, and
/// what cannot be read is no DRM file.
///
/// Paths are 8-bit texts as the file system has them. All operations may be called in any thread.

/// What a file is, by the way in which its content reaches the device. The values are part of the
/// interface: add at the end, never renumber.
enum DRM_KIND_T : unsigned char {
    DRM_KIND_NONE = 0, ///< not protected
    DRM_KIND_FORWARD_LOCK = 1, ///< a DRM message with content alone
    DRM_KIND_COMBINED_DELIVERY = 2, ///< a DRM message with rights and content
    DRM_KIND_CONTENT_V1 = 3, ///< encrypted content; its rights are delivered separately
    DRM_KIND_CONTENT_V2 = 4, ///< the same in the form of version 2
    DRM_KIND_RIGHTS = 5, ///< a rights object
};

/// What is known of the content of a DRM file. All texts end with a NUL; one that is not known,
/// that is too long for its field, or that holds control characters is empty, never cut.
struct DRM_CONTENT_METADATA_T {
    DRM_KIND_T kind;
    char encryption[26]; ///< "AES128CBC", "AES128CTR", "NULL"; empty for content in the clear
    char contentName[257]; ///< the name for people, as it stands in the file
    char contentURI[257]; ///< the identifier that rights refer to
    char contentType[257]; ///< the media type of what is protected, without parameters
    char rightsIssuerURL[2049]; ///< where rights are to be had
};
static_assert(offsetof(DRM_CONTENT_METADATA_T, contentType) == 541);
static_assert(offsetof(DRM_CONTENT_METADATA_T, rightsIssuerURL) == 798);

extern "C" {

/// DRM_IsDRMFile returns 1 for a DRM file, else 0.
WMSG_PLATFORM_EXPORT int DRM_IsDRMFile(const char *path);

/// DRM_CanForward returns 1 when the file may be passed on to another device: what is not
/// protected, and content whose rights are delivered separately. It returns 0 for DRM messages and
/// rights objects.
WMSG_PLATFORM_EXPORT int DRM_CanForward(const char *path);

/// DRM_HasRightsIssuerURL returns 1 when the file names a rights issuer, else 0.
WMSG_PLATFORM_EXPORT int DRM_HasRightsIssuerURL(const char *path);

/// DRM_GetContentMetaDataInFile sets `record` to a new record about the DRM file `path` and returns
/// 0; the caller releases the record with free(). It returns -1, with `record` null, for what is no
/// DRM file and when there is no memory. `option` is 0; `unused` is not touched and may be null.
WMSG_PLATFORM_EXPORT int DRM_GetContentMetaDataInFile(const char *path, int option,
                                                      DRM_CONTENT_METADATA_T **record,
                                                      unsigned int *unused);

} // extern "C"
