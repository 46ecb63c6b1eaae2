// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#include "sim/modem/pty.h"

#include <QtCore/QFile>

#include <cstdlib>
#include <fcntl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace wmsg::sim {

namespace {

constexpr qsizetype kMostUnsent = qsizetype(256) * 1024;

/// The terminal must not change what it passes on, nor send it back.
bool makeRaw(int terminal)
{
    termios settings = {};
    if (::tcgetattr(terminal, &settings) != 0) {
        return false;
    }
    ::cfmakeraw(&settings);
    return ::tcsetattr(terminal, TCSANOW, &settings) == 0;
}

} // namespace

QString Pty::open(const QString &link)
{
    close();
    m_link = link;
    service::Descriptor master(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
    char device[128];
    if (!master.isOpen() || ::grantpt(master.get()) != 0 || ::unlockpt(master.get()) != 0
        || ::ptsname_r(master.get(), device, sizeof device) != 0) {
        return u"no terminal: "_s + service::systemError();
    }
    service::Descriptor slave(::open(device, O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (!slave.isOpen() || !makeRaw(slave.get())) {
        return QString::fromLocal8Bit(device) + u": "_s + service::systemError();
    }
    m_device = device;
    QString problem = makeLink();
    if (!problem.isEmpty()) {
        return problem;
    }
    m_master = std::move(master);
    m_slave = std::move(slave);
    m_reading = std::make_unique<QSocketNotifier>(m_master.get(), QSocketNotifier::Read);
    connect(m_reading.get(), &QSocketNotifier::activated, this, &Pty::read);
    m_writing = std::make_unique<QSocketNotifier>(m_master.get(), QSocketNotifier::Write);
    m_writing->setEnabled(false);
    connect(m_writing.get(), &QSocketNotifier::activated, this, &Pty::flush);
    return {};
}

QString Pty::makeLink()
{
    const QByteArray name = QFile::encodeName(m_link);
    struct stat state = {};
    if (::lstat(name.constData(), &state) == 0) {
        if (!S_ISLNK(state.st_mode)) {
            return m_link + u" is there and is no link"_s;
        }
        ::unlink(name.constData());
    }
    return ::symlink(m_device.constData(), name.constData()) == 0
        ? QString()
        : m_link + u": "_s + service::systemError();
}

void Pty::close()
{
    if (!isOpen()) {
        return;
    }
    const QByteArray name = QFile::encodeName(m_link);
    char device[128];
    const ssize_t length = ::readlink(name.constData(), device, sizeof device);
    if (length >= 0 && QByteArrayView(device, length) == m_device) {
        ::unlink(name.constData());
    }
    m_reading->setEnabled(false);
    m_reading.release()->deleteLater(); // it may be the one that is calling
    m_writing->setEnabled(false);
    m_writing.release()->deleteLater();
    m_master.close();
    m_slave.close();
    m_unsent.clear();
}

void Pty::read()
{
    char piece[4096];
    const ssize_t count = ::read(m_master.get(), piece, sizeof piece);
    if (count > 0) {
        Q_EMIT received(QByteArray(piece, count));
    }
}

void Pty::write(const QByteArray &bytes)
{
    if (isOpen() && m_unsent.size() < kMostUnsent) {
        m_unsent += bytes;
        flush();
    }
}

void Pty::flush()
{
    while (!m_unsent.isEmpty()) {
        const ssize_t count =
            ::write(m_master.get(), m_unsent.constData(), static_cast<size_t>(m_unsent.size()));
        if (count <= 0) {
            break;
        }
        m_unsent.remove(0, count);
    }
    m_writing->setEnabled(!m_unsent.isEmpty());
}

} // namespace wmsg::sim
