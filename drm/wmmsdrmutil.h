// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "wmsg_export.h"

#include <QtCore/QString>

class WMMSMsg;
class WMMSMultipart;

/// WMMSDrmUtil tells whether what is protected by OMA DRM may leave the device: whether files may
/// be attached to a new message, and whether a received message may be forwarded. It also tells
/// what is inside the DRM parts of a message.
///
/// The answers come from the DRM client of the platform, which looks at files. Bytes of a part are
/// therefore written to a file below /tmp/ first, which only the user may read and which is gone
/// when the operation returns; saveToTmpFile() alone leaves it to its caller. A failure of the DRM
/// client or of a file is an answer like any other, never an error.
///
/// There is nothing in an object of it; all operations are static and are for one thread at a time.
class WMSG_EXPORT WMMSDrmUtil {
public:
    WMMSDrmUtil() = default;
    ~WMMSDrmUtil() = default;

    /// saveToTmpFile writes the data of `part` to a new file below /tmp/ and returns its path; the
    /// caller removes the file. The name is made of the part's getSrc(), line breaks in it become
    /// "_". It returns the empty string, and leaves no file, for a null part and when the file
    /// cannot be written. The local file name of the part stays.
    static QString saveToTmpFile(WMMSMultipart *part);

    /// getDataMimeType returns the media type of the content of `part`: of a DRM part, that of what
    /// is inside the container. It returns the empty string for a null part and when the container
    /// does not tell.
    static QString getDataMimeType(WMMSMultipart *part);

    /// MMS_IsDRMFile returns true when the file is protected; false for an empty path.
    static bool MMS_IsDRMFile(const QString &path);

    /// MMS_CanForward returns true when the file may be passed on. A file that is not protected may
    /// always be; an empty path may not.
    static bool MMS_CanForward(const QString &path);

    /// hasRightsIssuerURL returns true when the file tells where rights for it are to be had.
    static bool hasRightsIssuerURL(const QString &path);

    /// getDrmTypeMediaName returns `path`.
    static QString getDrmTypeMediaName(const QString &path);

    /// getSuggestLocalFileName returns a proposed absolute file name for saving `part` in `dir`.
    /// For a DRM part it has the name of a temporary file that is gone by then; without a `dir` it
    /// is the path of that file, to be used as a name only. It returns the empty string for a null
    /// part, and for a DRM part that cannot be written.
    static QString getSuggestLocalFileName(WMMSMultipart *part, const QString &dir);

    /// sendRequestRightsFromUI returns true when the DRM client knows the content of the file. It
    /// logs the URL of the rights issuer; no application is started.
    static bool sendRequestRightsFromUI(const QString &path);

    /// isRoMimeType returns true for the three media types of rights objects. The case counts.
    static bool isRoMimeType(const QString &type);

    /// canBeSentFormatCheck returns false when one of `files` is a DRM message by its extension,
    /// "dm". `files` are paths with line breaks between them; the case of the extension counts.
    static bool canBeSentFormatCheck(const QString &files);

    /// canBeSentDrmCheck returns false when one of `files` may not be passed on. `files` are paths
    /// with line breaks between them; without any it returns true.
    static bool canBeSentDrmCheck(const QString &files);

    /// canBeForwardedDrmCheck returns false when a part of `message` may not be passed on, and for
    /// a null message. Parts inside of parts are not looked at, and a part that cannot be written
    /// to a file does not count.
    static bool canBeForwardedDrmCheck(WMMSMsg *message);

    /// canBeForwardedDrmCheck returns the same for the message with the id `msgId` in the store;
    /// false when it cannot be read.
    static bool canBeForwardedDrmCheck(unsigned short msgId);
};
