// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "platform/drmclient/drm_container_p.h"
#include "tests/support/drm_containers.h"

#include <QtTest/QtTest>

/// Rows of bytes and what is read of them.

using wmsg::drm::Container;
using wmsg::drm::MaybeContainer;

inline const char *kindName(DRM_KIND_T kind)
{
    static const char *const names[] = {"none",     "forward-lock", "combined",
                                        "content1", "content2",     "rights"};
    return names[kind];
}

/// shown returns a container in one line: the kind, and what is not empty of the fields.
inline QByteArray shown(const MaybeContainer &container)
{
    if (!container) {
        return "not of this format";
    }
    QByteArray line = kindName(container->kind);
    const std::pair<const char *, QByteArray> fields[] = {
        {" type=", container->contentType},       {" uri=", container->contentUri},
        {" issuer=", container->rightsIssuerUrl}, {" name=", container->contentName},
        {" encryption=", container->encryption},
    };
    for (const auto &[name, value] : fields) {
        line += value.isEmpty() ? QByteArray() : name + value;
    }
    return line;
}

inline const QByteArray kOther = "not of this format";

inline void addColumns()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("expected");
}

inline void row(const char *name, const QByteArray &bytes, const QByteArray &expected)
{
    QTest::newRow(name) << bytes << expected;
}

/// exact returns a copy of the bytes in memory of just their size, so that the sanitizer sees the
/// byte behind them.
class Exact {
public:
    explicit Exact(QByteArrayView bytes) : m_size(bytes.size()), m_bytes(new char[size_t(m_size)])
    {
        std::copy(bytes.begin(), bytes.end(), m_bytes.get());
    }
    operator QByteArrayView() const { return {m_bytes.get(), m_size}; }

private:
    qsizetype m_size;
    std::unique_ptr<char[]> m_bytes;
};
