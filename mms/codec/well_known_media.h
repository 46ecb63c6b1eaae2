// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QStringView>

#include <array>

/// The well-known media table: 164 media types by their number. 0x00 to 0x4B are the WSP
/// content-type assignments in their assigned order; 0x4C to 0xA3 are this system's own.

namespace wmsg::codec {

/// One media type. `slash` is where its sub type begins, less one.
struct MediaType {
    const char16_t *text;
    quint8 size;
    quint8 slash;

    // The rows of the table are bare texts.
    template <size_t N>
    // NOLINTNEXTLINE(google-explicit-constructor)
    constexpr MediaType(const char16_t (&literal)[N]) : text(literal), size(N - 1), slash(0)
    {
        while (literal[slash] != u'/') {
            ++slash;
        }
    }
    constexpr QStringView view() const { return QStringView(text, size); }
};

// clang-format off
// Kept: 0x0E is spelled "byterantes".
inline constexpr MediaType kWellKnownMedia[] = {
    /* 0x00 */ {u"*/*"},
    /* 0x01 */ {u"text/*"},
    /* 0x02 */ {u"text/html"},
    /* 0x03 */ {u"text/plain"},
    /* 0x04 */ {u"text/x-hdml"},
    /* 0x05 */ {u"text/x-ttml"},
    /* 0x06 */ {u"text/x-vCalendar"},
    /* 0x07 */ {u"text/x-vCard"},
    /* 0x08 */ {u"text/vnd.wap.wml"},
    /* 0x09 */ {u"text/vnd.wap.wmlscript"},
    /* 0x0A */ {u"text/vnd.wap.wta-event"},
    /* 0x0B */ {u"multipart/*"},
    /* 0x0C */ {u"multipart/mixed"},
    /* 0x0D */ {u"multipart/form-data"},
    /* 0x0E */ {u"multipart/byterantes"},
    /* 0x0F */ {u"multipart/alternative"},
    /* 0x10 */ {u"application/*"},
    /* 0x11 */ {u"application/java-vm"},
    /* 0x12 */ {u"application/x-www-form-urlencoded"},
    /* 0x13 */ {u"application/x-hdmlc"},
    /* 0x14 */ {u"application/vnd.wap.wmlc"},
    /* 0x15 */ {u"application/vnd.wap.wmlscriptc"},
    /* 0x16 */ {u"application/vnd.wap.wta-eventc"},
    /* 0x17 */ {u"application/vnd.wap.uaprof"},
    /* 0x18 */ {u"application/vnd.wap.wtls-ca-certificate"},
    /* 0x19 */ {u"application/vnd.wap.wtls-user-certificate"},
    /* 0x1A */ {u"application/x-x509-ca-cert"},
    /* 0x1B */ {u"application/x-x509-user-cert"},
    /* 0x1C */ {u"image/*"},
    /* 0x1D */ {u"image/gif"},
    /* 0x1E */ {u"image/jpeg"},
    /* 0x1F */ {u"image/tiff"},
    /* 0x20 */ {u"image/png"},
    /* 0x21 */ {u"image/vnd.wap.wbmp"},
    /* 0x22 */ {u"application/vnd.wap.multipart.*"},
    /* 0x23 */ {u"application/vnd.wap.multipart.mixed"},
    /* 0x24 */ {u"application/vnd.wap.multipart.form-data"},
    /* 0x25 */ {u"application/vnd.wap.multipart.byteranges"},
    /* 0x26 */ {u"application/vnd.wap.multipart.alternative"},
    /* 0x27 */ {u"application/xml"},
    /* 0x28 */ {u"text/xml"},
    /* 0x29 */ {u"application/vnd.wap.wbxml"},
    /* 0x2A */ {u"application/x-x968-cross-cert"},
    /* 0x2B */ {u"application/x-x968-ca-cert"},
    /* 0x2C */ {u"application/x-x968-user-cert"},
    /* 0x2D */ {u"text/vnd.wap.si"},
    /* 0x2E */ {u"application/vnd.wap.sic"},
    /* 0x2F */ {u"text/vnd.wap.sl"},
    /* 0x30 */ {u"application/vnd.wap.slc"},
    /* 0x31 */ {u"text/vnd.wap.co"},
    /* 0x32 */ {u"application/vnd.wap.coc"},
    /* 0x33 */ {u"application/vnd.wap.multipart.related"},
    /* 0x34 */ {u"application/vnd.wap.sia"},
    /* 0x35 */ {u"text/vnd.wap.connectivity-xml"},
    /* 0x36 */ {u"application/vnd.wap.connectivity-wbxml"},
    /* 0x37 */ {u"application/pkcs7-mime"},
    /* 0x38 */ {u"application/vnd.wap.hashed-certificate"},
    /* 0x39 */ {u"application/vnd.wap.signed-certificate"},
    /* 0x3A */ {u"application/vnd.wap.cert-response"},
    /* 0x3B */ {u"application/xhtml+xml"},
    /* 0x3C */ {u"application/wml+xml"},
    /* 0x3D */ {u"text/css"},
    /* 0x3E */ {u"application/vnd.wap.mms-message"},
    /* 0x3F */ {u"application/vnd.wap.rollover-certificate"},
    /* 0x40 */ {u"application/vnd.wap.locc+wbxml"},
    /* 0x41 */ {u"application/vnd.wap.loc+xml"},
    /* 0x42 */ {u"application/vnd.syncml.drn+wbxml"},
    /* 0x43 */ {u"application/vnd.syncml.drn+xml"},
    /* 0x44 */ {u"application/vnd.syncml.notification"},
    /* 0x45 */ {u"application/vnd.wap.xhtml+xml"},
    /* 0x46 */ {u"application/vnd.wv.cps.cir"},
    /* 0x47 */ {u"application/vnd.oma.dd+xml"},
    /* 0x48 */ {u"application/vnd.oma.drm.message"},
    /* 0x49 */ {u"application/vnd.oma.drm.rights+xml"},
    /* 0x4A */ {u"application/vnd.oma.drm.rights+wbxml"},
    /* 0x4B */ {u"application/vnd.oma.drm.content"},
    /* 0x4C */ {u"multipart/related"},
    /* 0x4D */ {u"application/vnd.wap.wml+xml"},
    /* 0x4E */ {u"text/x-wap-wta-wml"},
    /* 0x4F */ {u"application/x-wap-wta-wmlc"},
    /* 0x50 */ {u"text/vnd.wap.channel"},
    /* 0x51 */ {u"application/smil"},
    /* 0x52 */ {u"application/x-shockwave-flash"},
    /* 0x53 */ {u"image/bmp"},
    /* 0x54 */ {u"image/jpg"},
    /* 0x55 */ {u"image/pjpeg"},
    /* 0x56 */ {u"image/svg+xml"},
    /* 0x57 */ {u"image/x-bmp"},
    /* 0x58 */ {u"image/x-png"},
    /* 0x59 */ {u"audio/amr"},
    /* 0x5A */ {u"audio/qcelp"},
    /* 0x5B */ {u"audio/GSM-EFR"},
    /* 0x5C */ {u"audio/imelody"},
    /* 0x5D */ {u"audio/x-imelody"},
    /* 0x5E */ {u"audio/mpeg"},
    /* 0x5F */ {u"audio/midi"},
    /* 0x60 */ {u"audio/mid"},
    /* 0x61 */ {u"audio/pcma"},
    /* 0x62 */ {u"audio/pcmu"},
    /* 0x63 */ {u"audio/x-ms-wma"},
    /* 0x64 */ {u"audio/wav"},
    /* 0x65 */ {u"audio/x-wav"},
    /* 0x66 */ {u"audio/basic"},
    /* 0x67 */ {u"audio/au"},
    /* 0x68 */ {u"audio/x-amr"},
    /* 0x69 */ {u"audio/sp-midi"},
    /* 0x6A */ {u"audio/3gpp"},
    /* 0x6B */ {u"audio/mobile-xmf"},
    /* 0x6C */ {u"audio/asf"},
    /* 0x6D */ {u"text/x-melody"},
    /* 0x6E */ {u"text/x-emelody"},
    /* 0x6F */ {u"text/x-imelody"},
    /* 0x70 */ {u"video/mp4"},
    /* 0x71 */ {u"video/h263"},
    /* 0x72 */ {u"video/x-ms-wmv"},
    /* 0x73 */ {u"image/x-gif"},
    /* 0x74 */ {u"audio/mp4"},
    /* 0x75 */ {u"audio/x-mid"},
    /* 0x76 */ {u"audio/x-midi"},
    /* 0x77 */ {u"audio/aac"},
    /* 0x78 */ {u"audio/mpeg3"},
    /* 0x79 */ {u"audio/mp3"},
    /* 0x7A */ {u"audio/x-mpeg"},
    /* 0x7B */ {u"audio/x-mp3"},
    /* 0x7C */ {u"audio/x-mpeg3"},
    /* 0x7D */ {u"audio/evrc"},
    /* 0x7E */ {u"video/mpeg"},
    /* 0x7F */ {u"video/x-mpeg"},
    /* 0x80 */ {u"video/x-mpeg4"},
    /* 0x81 */ {u"video/x-mpeg4aac"},
    /* 0x82 */ {u"video/x-mpeg4amr"},
    /* 0x83 */ {u"video/3gpp"},
    /* 0x84 */ {u"video/3gpp2"},
    /* 0x85 */ {u"video/asf"},
    /* 0x86 */ {u"video/x-ms-asf"},
    /* 0x87 */ {u"video/pmd"},
    /* 0x88 */ {u"application/x-h3g-drm-mmv"},
    /* 0x89 */ {u"application/x-h3g-drm-mmt"},
    /* 0x8A */ {u"application/x-h3g-drm-mma"},
    /* 0x8B */ {u"application/brelwick-mmstemplate"},
    /* 0x8C */ {u"audio/amr-wb"},
    /* 0x8D */ {u"audio/vnd.rn-realaudio"},
    /* 0x8E */ {u"audio/x-pn-realaudio"},
    /* 0x8F */ {u"video/vnd.rn-realvideo"},
    /* 0x90 */ {u"application/vnd.rn-realmedia"},
    /* 0x91 */ {u"application/java-archive"},
    /* 0x92 */ {u"application/java"},
    /* 0x93 */ {u"text/vnd.sun.j2me.app-descriptor"},
    /* 0x94 */ {u"text/wml"},
    /* 0x95 */ {u"application/x-pn-realmedia"},
    /* 0x96 */ {u"audio/m4a"},
    /* 0x97 */ {u"audio/mpg"},
    /* 0x98 */ {u"audio/x-au"},
    /* 0x99 */ {u"audio/x-m4a"},
    /* 0x9A */ {u"audio/x-mpg"},
    /* 0x9B */ {u"application/x-h3g-drm-mmi"},
    /* 0x9C */ {u"application/x-h3g-drm-mmr"},
    /* 0x9D */ {u"audio/vnd.qcelp"},
    /* 0x9E */ {u"text/v-card"},
    /* 0x9F */ {u"audio/3gpp2"},
    /* 0xA0 */ {u"audio/mp4a-latm"},
    /* 0xA1 */ {u"video/mp4v-es"},
    /* 0xA2 */ {u"video/h263-2000"},
    /* 0xA3 */ {u"video/3gp2"},
};
// clang-format on

inline constexpr int kWellKnownMediaCount = sizeof(kWellKnownMedia) / sizeof(kWellKnownMedia[0]);
static_assert(kWellKnownMediaCount == 164);

/// An index over the table by text, made at compile time: open addressing, so that a look-up
/// compares one or two rows. Rows are entered in table order, so the first of two equal ones is
/// found.
class MediaIndex {
public:
    constexpr MediaIndex()
    {
        for (auto &slot : m_slots) {
            slot = kFree;
        }
        for (int number = 0; number < kWellKnownMediaCount; ++number) {
            quint32 slot = hashOf(kWellKnownMedia[number].view(), kSeed);
            while (m_slots[slot % kSlots] != kFree) {
                ++slot;
            }
            m_slots[slot % kSlots] = static_cast<quint8>(number);
        }
    }
    /// The number of the media type that equals `text`, or -1.
    [[nodiscard]] int find(QStringView text) const
    {
        return find(hashOf(text, kSeed), [text](QStringView row) { return row == text; });
    }
    /// The number of the media type of that main and sub type, or -1.
    [[nodiscard]] int find(QStringView mainType, QStringView subType) const
    {
        const auto hash = hashOf(subType, hashOf(u"/", hashOf(mainType, kSeed)));
        return find(hash, [mainType, subType](QStringView row) {
            return row.size() == mainType.size() + 1 + subType.size() && row.startsWith(mainType)
                && row[mainType.size()] == u'/' && row.endsWith(subType);
        });
    }

private:
    static constexpr quint32 kSlots = 1024;
    static constexpr quint32 kSeed = 2166136261U;
    static constexpr quint8 kFree = 255;

    template <typename Equals> int find(quint32 slot, Equals equals) const
    {
        for (; m_slots[slot % kSlots] != kFree; ++slot) {
            const int number = m_slots[slot % kSlots];
            if (equals(kWellKnownMedia[number].view())) {
                return number;
            }
        }
        return -1;
    }
    static constexpr quint32 hashOf(QStringView text, quint32 hash)
    {
        for (const char16_t *unit = text.utf16(), *end = unit + text.size(); unit != end; ++unit) {
            hash = (hash ^ *unit) * 16777619U;
        }
        return hash;
    }

    std::array<quint8, kSlots> m_slots{};
};

inline constexpr MediaIndex kMediaIndex;

} // namespace wmsg::codec
