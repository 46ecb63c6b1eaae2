// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "tools/wmsg/store_run.h"

#include "tools/wmsg/field_words.h"
#include "tools/wmsg/files.h"
#include "tools/wmsg/message_json.h"
#include "tools/wmsg/message_view.h"
#include "tools/wmsg/report.h"
#include "tools/wmsg/store_folder.h"
#include "tools/wmsg/text_view.h"

#include <mms/model/result_codes.h>
#include <platform/engine/mms_eng_controller.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>

#include <utility>

using namespace Qt::StringLiterals;

namespace wmsg::cli {

namespace {

constexpr qsizetype kAddressWidth = 24;
constexpr qsizetype kSubjectWidth = 40;

MMS_ENG_Controller *engine()
{
    return MMS_ENG_Controller::Instance();
}

int exitCode(bool isFine)
{
    return finishOutput() && isFine ? ExitFine : ExitBadInput;
}

QString messageName(unsigned short id)
{
    return u"message %1"_s.arg(id);
}

/// Who a message is from, or who it goes to when it says nothing about that.
QString partnerOf(WMMSMsg &message)
{
    if (message.getFrom().isValid()) {
        return message.getFrom().getEntryVal();
    }
    QStringList values;
    for (const auto &list : {message.getTo(), message.getCc(), message.getBcc()}) {
        for (const WMFMEntry &entry : list) {
            values += entry.getEntryVal();
        }
    }
    return values.isEmpty() ? QString() : u"to "_s + values.join(u", "_s);
}

QJsonObject placeOf(unsigned short id, unsigned short folder)
{
    return {{u"id"_s, id}, {u"folder"_s, folderName(folder)}};
}

QJsonObject joined(QJsonObject object, const QJsonObject &more)
{
    for (auto member = more.begin(); member != more.end(); ++member) {
        object.insert(member.key(), member.value());
    }
    return object;
}

} // namespace

void StoreRun::tell(const QString &line, const QJsonObject &object) const
{
    say(m_json ? QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Compact)) + u'\n'
               : line);
}

bool StoreRun::refuse(const QString &what) const
{
    complain(what + u": "_s + m_words.last());
    return false;
}

int StoreRun::list(std::optional<unsigned short> folder)
{
    Ids folders;
    if (folder) {
        folders = {*folder};
    } else if (engine()->ListFolders(&folders) != MMS_ENG_OK) {
        return exitCode(refuse(u"store list"_s));
    }
    bool isFine = true;
    for (const unsigned short number : std::as_const(folders)) {
        isFine = listFolder(number) && isFine;
    }
    if (m_isFirst && isFine && !m_json) {
        say(u"no messages\n"_s);
    }
    return exitCode(isFine);
}

bool StoreRun::listFolder(unsigned short folder)
{
    Ids ids;
    if (engine()->ListMMS(folder, &ids) != MMS_ENG_OK) {
        return refuse(u"store list"_s);
    }
    bool isFine = true;
    for (const unsigned short id : std::as_const(ids)) {
        m_isFirst = false;
        isFine = listMessage(id, folder) && isFine;
    }
    return isFine;
}

bool StoreRun::listMessage(unsigned short id, unsigned short folder)
{
    WMMSMsg message;
    if (!readStored(id, false, message)) {
        return refuse(messageName(id));
    }
    const QString line = u"%1  %2  %3  %4  %5"_s.arg(
        QString::number(id).rightJustified(5), folderName(folder).leftJustified(9),
        message.getDate().toString(u"yyyy-MM-dd hh:mm"_s),
        shortened(partnerOf(message), kAddressWidth).leftJustified(kAddressWidth),
        shortened(message.getSubject(), kSubjectWidth));
    QJsonObject content = contentJson(message);
    content.remove(u"parts"_s);
    tell(line + u'\n', joined(placeOf(id, folder), content));
    return true;
}

int StoreRun::show(const Ids &ids)
{
    bool isFine = true;
    for (const unsigned short id : ids) {
        isFine = showMessage(id) && isFine;
    }
    return exitCode(isFine);
}

bool StoreRun::showMessage(unsigned short id)
{
    WMMSMsg message;
    unsigned short folder = 0;
    if (engine()->FindMMS(id, &folder) != MMS_ENG_OK || !readStored(id, true, message)) {
        return refuse(messageName(id));
    }
    const QString gap = std::exchange(m_isFirst, false) ? QString() : u"\n"_s;
    const QString title = u"%1 in %2, %3\n"_s.arg(messageName(id), folderName(folder),
                                                  mmsTypeInWords(message.getMMSType()));
    tell(gap + title + contentView(message, m_full ? Detail::Full : Detail::Short),
         joined(placeOf(id, folder), contentJson(message)));
    return true;
}

int StoreRun::add(const QList<QByteArray> &files, unsigned short folder, qint64 sizeLimit)
{
    bool isFine = true;
    for (const QByteArray &file : files) {
        isFine = addFile(file, folder, sizeLimit) && isFine;
    }
    return exitCode(isFine);
}

bool StoreRun::addFile(const QByteArray &path, unsigned short folder, qint64 sizeLimit)
{
    DecodedFile file;
    file.name = shownName(path);
    QString problem = readInput(path, sizeLimit, file.bytes);
    if (problem.isEmpty() && file.bytes.isEmpty()) {
        problem = u"is empty"_s;
    }
    if (!problem.isEmpty()) {
        complain(file.name + u": "_s + problem);
        return false;
    }
    file.kind = kindOf(file.bytes);
    decode(file);
    if (file.result != MMS_DECODE_OK) {
        complain(failureInWords(file));
        return false;
    }
    StoreFolder store(folder);
    problem = store.add(file.message);
    if (!problem.isEmpty()) {
        complain(file.name + u": "_s + problem);
        return false;
    }
    QJsonObject object{{u"file"_s, file.name}};
    store.addPlace(object);
    tell(u"stored %1 as %2\n"_s.arg(printable(file.name), store.placeInWords()), object);
    return true;
}

int StoreRun::exportTo(unsigned short id, const QByteArray &file)
{
    WMMSMsg message;
    if (!readStored(id, true, message)) {
        return exitCode(refuse(messageName(id)));
    }
    QByteArray bytes;
    if (const QString problem = mailFileBytes(message, bytes); !problem.isEmpty()) {
        complain(messageName(id) + u": "_s + problem);
        return ExitBadInput;
    }
    if (const QString problem = writeOutput(file, bytes); !problem.isEmpty()) {
        complain(shownName(file) + u": "_s + problem);
        return ExitBadInput;
    }
    if (file != "-") {
        tell(u"wrote %1: %2\n"_s.arg(printable(shownName(file)), sizeInWords(bytes.size())),
             {{u"id"_s, id}, {u"file"_s, shownName(file)}, {u"size"_s, bytes.size()}});
    }
    return exitCode(true);
}

int StoreRun::remove(const Ids &ids)
{
    bool isFine = true;
    for (const unsigned short id : ids) {
        if (engine()->DeleteMMS(id) == MMS_ENG_OK) {
            tell(u"removed message %1\n"_s.arg(id), {{u"id"_s, id}, {u"removed"_s, true}});
        } else {
            isFine = refuse(messageName(id));
        }
    }
    return exitCode(isFine);
}

int StoreRun::move(const Ids &ids, unsigned short folder)
{
    bool isFine = true;
    for (const unsigned short id : ids) {
        if (engine()->MoveMMS(id, folder) == MMS_ENG_OK) {
            tell(u"moved message %1 to %2\n"_s.arg(id).arg(folderName(folder)),
                 placeOf(id, folder));
        } else {
            isFine = refuse(messageName(id));
        }
    }
    return exitCode(isFine);
}

int StoreRun::check()
{
    QStringList problems;
    if (engine()->CheckStore(&problems) != MMS_ENG_OK) {
        return exitCode(refuse(u"store check"_s));
    }
    const QString path = MMS_ENG_Controller::StorePath();
    for (const QString &problem : std::as_const(problems)) {
        complain(path + u": "_s + problem);
    }
    tell(problems.isEmpty() ? u"%1: all is whole\n"_s.arg(printable(path)) : QString(),
         {{u"store"_s, path}, {u"problems"_s, QJsonArray::fromStringList(problems)}});
    return exitCode(problems.isEmpty());
}

} // namespace wmsg::cli
