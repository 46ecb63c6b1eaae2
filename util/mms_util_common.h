// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "core/wmfmentry.h"
#include "qt2/qarray.h"
#include "qt2/qvaluelist.h"
#include "wmsg_export.h"

#include <QtCore/QDateTime>
#include <QtCore/QString>

/// MMS_UTIL_Common is the tool box of the library: address entries as text, the places where
/// messages lie on the device, the names of new files, and small operations on paths, content ids,
/// dates and text. There are no objects of it.
///
/// All operations are for the thread of the application's event loop: the two file-name counters
/// and the buffer of ipByteToStr belong to the process and have no lock.
///
/// **Address text.** One entry is "<" name ">" "[" word "]" value, with nothing between them, for
/// example
/// `<Ann>[EMAIL]ann@example.org` or `<>[PLMN]+15550100`. The word is EMAIL for type 0, PLMN for
/// type 1 and UNKNOWN for any other. There is no escaping: a name with a ">", or a value with a ","
/// in a list, does not come back as it was.
///
/// **Storage tree.** The root is the value of the environment variable UVO_EXTRA_SYS_DATA_PATH,
/// read at each call; without it the root is empty. Below it, each directory with a "/" at its end:
///
///     <root>/mms/                  getWorkDir, getQuickSendContactDir
///       mailfile/                  getMailFileDir: a message each, <database id>.mms
///       mmstemplate/               getTemplateDir
///       tmp/                       getTmpDir
///       recentcontacts/            getMostRecentContactsDir
///         postcard.txt             getMostRecentContactsFile
///       qscontact.txt              getQuickSendContactFile
///
/// The operations that return a path only compute it: nothing is created, except by checkDir and by
/// the two that call it. docs/formats/ has both formats at length.
class WMSG_EXPORT MMS_UTIL_Common {
public:
    MMS_UTIL_Common() = delete;

    /// @name Address entries as text
    /// @{

    /// entryToString returns the text of `entry`; it is empty when the entry is not valid.
    static QString entryToString(const WMFMEntry &entry);

    /// stringToEntry returns a new entry read from `text`; the caller owns and deletes it. The name
    /// lies between the first "<" and the first ">", the word between the first "[" and the first
    /// "]", and the value is all that follows that "]"; nothing is trimmed. Words are matched
    /// exactly, and any other than EMAIL and PLMN gives type 127. What lacks one of its brackets,
    /// or has them the wrong way round, is empty; without a word the type is 127.
    static WMFMEntry *stringToEntry(const QString &text);

    /// stringToEntry makes `entry` what is read from `text`; nothing of what it held is left. A
    /// null `entry` is ignored.
    static void stringToEntry(const QString &text, WMFMEntry *entry);

    /// entryListToString returns the texts of all entries in order, each with a "," behind it, the
    /// last one too. An entry that is not valid leaves its comma.
    static QString entryListToString(const QValueList<WMFMEntry> &entries);

    /// stringToEntryList returns the entries of a list text. The text is cut at every ","; empty
    /// pieces are dropped, the others lose the white space around them and are read one by one.
    static QValueList<WMFMEntry> stringToEntryList(const QString &text);

    /// stringToEntryList appends the entries of a list text to `entries`. A null `entries` is
    /// ignored.
    static void stringToEntryList(const QString &text, QValueList<WMFMEntry> *entries);

    /// @}
    /// @name The storage tree
    /// @{

    /// checkDir creates what is missing of the root, the work directory, and the mail file,
    /// template, tmp and recent contacts directories, in this order, a level each. A new directory
    /// is opened to all users (mode 777); one that exists stays as it is. It returns true when all
    /// exist. At the first one that cannot be created it returns false, and the later ones are not
    /// tried.
    static bool checkDir();

    static QString getWorkDir();
    static QString getMailFileDir();
    static QString getTemplateDir();
    static QString getTmpDir();
    static QString getMostRecentContactsDir();
    static QString getMostRecentContactsFile();
    static QString getQuickSendContactDir();
    static QString getQuickSendContactFile();

    /// getPreloadTemplateDir returns the directory of the templates that the device comes with. It
    /// lies outside the tree, is only read, and is never created.
    static QString getPreloadTemplateDir();

    /// getMmsPreviewTmpDir returns the directory for the preview of a message. It lies outside the
    /// tree and is not created by checkDir.
    static QString getMmsPreviewTmpDir();

    /// msgDBIDToMailFileName returns the path of the mail file of the message with the database id
    /// `id`.
    static QString msgDBIDToMailFileName(unsigned int id);

    /// @}
    /// @name Names of new files
    /// @{

    /// generateFileName returns a path for a new file of the well-known media number `type`: the
    /// name of the application, five digits and an extension, in the tmp directory, or in the mail
    /// file directory for a multimedia message (62). The digits are a count that goes up by one
    /// with each call of the process and starts again after 65535. A type without a known extension
    /// gives the bare name, with neither a directory nor an extension. It calls checkDir as well.
    /// Whether the file exists is not looked at.
    static QString generateFileName(unsigned short type);

    /// generateFileNameAtTmp returns "/tmp/t", five digits and ".txt" for plain text (3), and the
    /// five digits alone for any other media number. The digits are a count of its own, as in
    /// generateFileName. It calls checkDir as well.
    static QString generateFileNameAtTmp(unsigned short type);

    /// getTmpFileName returns a path in `dir`, or in /tmp/ when `dir` is empty, that keeps the file
    /// name of `name` and does not exist yet: a.jpg, or else a0.jpg, a1.jpg and so on. Directories
    /// in `name` are dropped; a name that leaves nothing becomes "tmp". A link that leads nowhere
    /// counts as existing. The file is not created, so that another process can be faster.
    static QString getTmpFileName(const QString &name, const QString &dir);

    /// @}
    /// @name Paths. Both "/" and "\" separate.
    /// @{

    /// stripPath returns what follows the last separator, all of the path when it has none. White
    /// space around `path` is dropped first.
    static QString stripPath(const QString &path);

    /// getPath returns what stands before the last separator, all of the path when it has none.
    /// White space around `path` is dropped first.
    static QString getPath(const QString &path);

    /// getExtName returns what follows the last ".", without white space around it; it is empty
    /// when there is none. The dot may stand in a directory's name: use stripPath first.
    static QString getExtName(const QString &name);

    /// getNoExtName returns what stands before the last ".", all of `name` when there is none.
    static QString getNoExtName(const QString &name);

    /// mkAbsoluteFileName returns `dir` and `name` with one "/" between them. `name` loses the
    /// white space around it and its content-id marks, as parseCid does; `dir` is taken as it
    /// stands. A "/" is added when neither brings one, and one of two is dropped. `name` may still
    /// hold separators and "..": pass names from a message through stripPath first.
    static QString mkAbsoluteFileName(const QString &name, const QString &dir);

    /// @}
    /// @name Content ids
    /// @{

    /// parseCid returns `cid` without a leading "<", then without a trailing ">", then without a
    /// leading "cid:" in any case.
    static QString parseCid(const QString &cid);

    /// isCidEqual returns true when two content ids name the same part: both lose the white space
    /// around them and their marks, and are compared without regard to case. An empty `a` equals
    /// nothing.
    static bool isCidEqual(const QString &a, const QString &b);

    /// @}
    /// @name Dates, addresses, media types
    /// @{

    /// stringToTime reads a date of the form "Thu May  5 03:40:13 1999". The month is the three
    /// letters at position 4, the day the two characters at 8, the year the last four; the time is
    /// the first hh:mm:ss anywhere, midnight without one. A text too short to have a month, an
    /// unknown month, and a date or a time that does not exist give an invalid date-time.
    static QDateTime stringToTime(const QString &text);

    /// ipByteToStr returns the dotted form of `address`, the least significant byte first, so that
    /// an address in network order prints as usual on a little-endian device. The text belongs to
    /// the library and holds until the next call.
    static char *ipByteToStr(unsigned int address);

    /// mimeTypeGetValue returns the well-known media number of the type `main` "/" `sub`, or 65535
    /// when it has none.
    static unsigned short mimeTypeGetValue(const QString &main, const QString &sub);

    /// @}
    /// @name Text
    /// @{

    /// fromUtf8 returns `bytes` read as UTF-8. Bytes that are not UTF-8 become U+FFFD each, and a
    /// byte-order mark at the start is dropped. No bytes give an empty string, not a null one.
    static QString fromUtf8(const QArray<char> &bytes);

    /// toUTF8 sets `out` to the UTF-8 form of `source`, a text of 16-bit units, up to its first NUL
    /// character. It returns true, or false with `out` unchanged when `charset` is none of UCS2,
    /// UTF-16BE, UTF-16LE and UTF-16 in any case, or when there is no memory.
    ///
    /// A byte-order mark at the start is dropped, and so is an odd last byte. Units are read in
    /// little-endian order. Behind the mark FF FE, or with the charset UTF-16LE, they are taken as
    /// they come; else each two neighbours change places, which no sender expects, and an odd last
    /// unit becomes 0. A surrogate without its partner becomes "?".
    ///
    /// `out` may share its bytes with `source`; all holders of `out` see the result.
    static bool toUTF8(const QArray<char> &source, const QString &charset, QArray<char> &out);

    /// @}
};
