// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tests/witness/capture.h"

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>
#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QTemporaryDir>

/// One body part as tshark reads it. Values that it did not find are empty.
struct WitnessedPart {
    QString type;
    QString charset;
    QString name;
    QString location;
    QString id;
    QByteArray data;
};

/// What tshark makes of one PDU.
class Testimony {
public:
    explicit Testimony(const QJsonObject &mmse) : m_mmse(mmse) { }

    /// True when tshark saw no MMS message at all.
    [[nodiscard]] bool isEmpty() const { return m_mmse.isEmpty(); }

    /// The header fields by their names in tshark without "mmse.", with the values that it shows,
    /// in wire order.
    [[nodiscard]] QMap<QString, QStringList> fields() const;
    /// The bytes of the fields of that name, id byte included, in the form of toHex(). For texts
    /// outside ASCII: those tshark shows wrong.
    [[nodiscard]] QStringList bytesOf(const QString &field) const;

    /// The content type of the header, with the parameters that tshark names.
    [[nodiscard]] QString contentType() const;
    [[nodiscard]] QString start() const;
    [[nodiscard]] QString startType() const;
    [[nodiscard]] QList<WitnessedPart> parts() const;

private:
    QJsonObject m_mmse;
};

/// Hands PDUs to tshark. Each call runs it once.
class Witness {
public:
    /// True when tshark is there.
    [[nodiscard]] static bool isPresent();

    /// The testimony about `pdu`; an empty one when tshark failed or saw no MMS message.
    Testimony read(QByteArrayView pdu, Direction direction);
    /// How many malformed packets and errors tshark sees; -1 when it failed.
    int complaintsAbout(QByteArrayView pdu, Direction direction);

private:
    QString writeCapture(QByteArrayView pdu, Direction direction);

    QTemporaryDir m_folder;
};
