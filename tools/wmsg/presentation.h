// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <mms/model/wmmsmultipart.h>
#include <qt2/qvaluelist.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace wmsg::cli {

/// One page of a presentation: at most one picture or film, one text and one sound, by the names of
/// their parts.
struct Slide {
    QString picture;
    QString film;
    QString text;
    QString sound;
};

/// Puts parts on slides: a slide for each picture and film, texts beside them in order and on
/// slides of their own when there are more, sounds where no film plays. Other parts are on none.
[[nodiscard]] QList<Slide> slidesOf(const QValueList<WMMSMultipart> &parts);

/// The slides as a SMIL document, with a region for images above one for text.
[[nodiscard]] QByteArray smilOf(const QList<Slide> &slides);

} // namespace wmsg::cli
