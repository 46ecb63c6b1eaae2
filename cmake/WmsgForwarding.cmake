# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

# Each public class also has a header of its own name: #include <WMMSMsg>.

set(WMSG_FORWARDING
    qt2/qarray.h                 QArray
    qt2/qcstring.h               QCString
    qt2/qcustomevent.h           QCustomEvent
    qt2/qvaluelist.h             QValueList
    qt2/qwssocket.h              QWSSocket

    core/wmfm.h                  WMFM
    core/wmfmentry.h             WMFMEntry
    core/wmfmlistener.h          WMFMListener
    core/wmfmmsg.h               WMFMMsg
    core/wmfmsession.h           WMFMSession

    mms/codec/mms_hdr_s.h        MMS_HDR_S
    mms/codec/msg_field_mask.h   Msg_Field_Mask
    mms/codec/msgfieldbase.h     MsgFieldBase
    mms/codec/wmmscontenttype.h  WMMSContentType
    mms/codec/wsp_stream.h       WSP_Stream
    mms/codec/fields.h           Field_Bcc
    mms/codec/fields.h           Field_Cc
    mms/codec/fields.h           Field_ContentLocation
    mms/codec/fields.h           Field_ContentType
    mms/codec/fields.h           Field_MsgDate
    mms/codec/fields.h           Field_DeliveryReport
    mms/codec/fields.h           Field_DeliveryTime
    mms/codec/fields.h           Field_Expiry
    mms/codec/fields.h           Field_From
    mms/codec/fields.h           Field_MsgClass
    mms/codec/fields.h           Field_MsgID
    mms/codec/fields.h           Field_MsgType
    mms/codec/fields.h           Field_Version
    mms/codec/fields.h           Field_MsgSize
    mms/codec/fields.h           Field_Priority
    mms/codec/fields.h           Field_ReadReport
    mms/codec/fields.h           Field_ReportAllowed
    mms/codec/fields.h           Field_ResponseStatus
    mms/codec/fields.h           Field_ResponseText
    mms/codec/fields.h           Field_SenderVisibility
    mms/codec/fields.h           Field_MsgStatus
    mms/codec/fields.h           Field_Subject
    mms/codec/fields.h           Field_To
    mms/codec/fields.h           Field_TID

    mms/model/mms_util_conv.h    MMS_UTIL_Conv
    mms/model/mms_util_tool.h    MMS_UTIL_Tool
    mms/model/wmmsmsg.h          WMMSMsg
    mms/model/wmmsmultipart.h    WMMSMultipart

    mms/session/mms_ua_cmditem.h MMS_UA_CmdItem
    mms/session/mms_ua_cmd.h     MMS_UA_Cmd
    mms/session/mms_ua_cmd.h     MMS_UA_TextCmd
    mms/session/mms_ua_cmd.h     MMS_UA_UriCmd
    mms/session/mms_ua_cmd.h     MMS_UA_AppIdCmd
    mms/session/mms_ua_cmd.h     MMS_UA_TargetCmd
    mms/session/mms_ua_cmd.h     MMS_UA_SendCmd
    mms/session/mms_ua_cmd.h     MMS_UA_RegisterCmd
    mms/session/mms_ua_cmd.h     MMS_UA_DeRegisterCmd
    mms/session/mms_ua_cmd.h     MMS_UA_RetrieveCmd
    mms/session/mms_ua_cmd.h     MMS_UA_AbortCmd
    mms/session/mms_ua_cmd.h     MMS_UA_PauseCmd
    mms/session/mms_ua_cmd.h     MMS_UA_ResumeCmd
    mms/session/mms_ua_svcmd.h   MMS_UA_SvCmd
    mms/session/mms_ua_svcmd.h   MMS_UA_SvReqCompleteCmd
    mms/session/mms_ua_svcmd.h   MMS_UA_SvRegCompleteCmd
    mms/session/mms_ua_svcmd.h   MMS_UA_SvRetrCompleteCmd
    mms/session/mms_ua_svcmd.h   MMS_UA_SvProgCmd
    mms/session/mms_ua_svcmd.h   MMS_UA_SvStsRetCmd
    mms/session/mms_ua_svcmd.h   MMS_UA_SvNotiCmd
    mms/session/mms_ua_svcmd.h   MMS_UA_SvReportCmd
    mms/session/mms_ua_svcmd.h   MMS_UA_SvDeliCmd
    mms/session/mms_ua_svcmd.h   MMS_UA_SvReadRecCmd
    mms/session/wmmssession.h    WMMSSession

    sms/wsmsclient.h             WSMSClient
    sms/wsmsmsg.h                WSMSMsg
    sms/wsmssession.h            WSMSSession

    util/mms_util_common.h       MMS_UTIL_Common

    drm/wmmsdrmutil.h            WMMSDrmUtil

    platform/application/wapplication.h             WApplication
    platform/engine/mms_eng_controller.h            MMS_ENG_Controller
    platform/engine/mms_msg_records.h               MMS_MSG_HDR_T
    platform/engine/mms_msg_records.h               MMS_MSG_BDY_T
    platform/mimetype/am_mimetype.h                 AM_MimeType
    platform/mimetype/util_mimetype.h               UTIL_MimeType
    platform/telephony/util_tapi_device.h           UTIL_TAPI_Device
    platform/telephony/util_tapi_event.h            UTIL_TAPI_Event
    platform/timeconversion/util_timeconversion.h   UTIL_TimeConversion
)

# Writes the forwarding headers into the build tree and adds them to what the library installs.
function(wmsg_forwarding_headers)
    set(rows ${WMSG_FORWARDING})
    set(written)
    while(rows)
        list(POP_FRONT rows header name)
        file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/include/${name} CONTENT "#include \"${header}\"\n")
        list(APPEND written ${PROJECT_BINARY_DIR}/include/${name})
    endwhile()
    target_sources(wmsg PUBLIC FILE_SET generated FILES ${written})
endfunction()
