# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""A ModemManager with one modem that is online, for python3-dbusmock: as much of it as an MMS client asks for.

The bearer is the loopback interface. The method Push of the interface wmsg.Mock puts the data of a short message
into the modem and tells that it arrived."""

import dbus
import dbus.service
import dbusmock

BUS_NAME = "org.freedesktop.ModemManager1"
MAIN_OBJ = "/org/freedesktop/ModemManager1"
MAIN_IFACE = BUS_NAME
SYSTEM_BUS = True
IS_OBJECT_MANAGER = True

MODEM = MAIN_OBJ + "/Modem/0"
SIM = MAIN_OBJ + "/SIM/0"
BEARER = MAIN_OBJ + "/Bearer/0"
SMS = MAIN_OBJ + "/SMS/%i"
MESSAGING = BUS_NAME + ".Modem.Messaging"
STATE_CONNECTED = 11
SMS_RECEIVED = 3
SMS_DELIVER = 1


def messages():
    return dbus.Array([dbus.ObjectPath(path) for path in dbusmock.get_objects() if "/SMS/" in path], signature="o")


def list_messages(modem):
    return messages()


def delete_message(modem, path):
    modem.RemoveObject(path)
    modem.UpdateProperties(MESSAGING, {"Messages": messages()})


@dbus.service.method("wmsg.Mock", in_signature="ay")
def Push(self, data):
    self.pushed = getattr(self, "pushed", 0) + 1
    path = dbus.ObjectPath(MAIN_OBJ + f"/SMS/{self.pushed}")
    self.AddObject(path, BUS_NAME + ".Sms", {
        "State": dbus.UInt32(SMS_RECEIVED),
        "PduType": dbus.UInt32(SMS_DELIVER),
        "Number": dbus.String("+15550199"),
        "Text": dbus.String(""),
        "Data": dbus.Array(data, signature="y"),
        "SMSC": dbus.String(""),
        "Timestamp": dbus.String("2026-01-01T00:00:00+00"),
        "Storage": dbus.UInt32(1),
    }, [])
    modem = dbusmock.get_object(MODEM)
    modem.UpdateProperties(MESSAGING, {"Messages": messages()})
    modem.EmitSignal(MESSAGING, "Added", "ob", [path, True])


def load(mock, parameters):
    mock.AddObject(SIM, BUS_NAME + ".Sim", {
        "Imsi": dbus.String("310260000000000"),
        "OperatorIdentifier": dbus.String("310260"),
        "OperatorName": dbus.String("Test"),
        "SimIdentifier": dbus.String("1"),
    }, [])
    mock.AddObject(BEARER, BUS_NAME + ".Bearer", {
        "Interface": dbus.String("lo"),
        "Connected": dbus.Boolean(True),
        "Suspended": dbus.Boolean(False),
        "Properties": dbus.Dictionary({"apn": dbus.String("mms")}, signature="sv"),
        "Ip4Config": dbus.Dictionary({"method": dbus.UInt32(2), "address": dbus.String("127.0.0.1"),
                                      "prefix": dbus.UInt32(8), "dns1": dbus.String("127.0.0.1")},
                                     signature="sv"),
        "Ip6Config": dbus.Dictionary({"method": dbus.UInt32(0)}, signature="sv"),
        "BearerType": dbus.UInt32(1),
    }, [])
    bearers = dbus.Array([dbus.ObjectPath(BEARER)], signature="o")
    mock.AddObject(MODEM, BUS_NAME + ".Modem", {
        "State": dbus.Int32(STATE_CONNECTED),
        "MaxActiveBearers": dbus.UInt32(1),
        "MaxBearers": dbus.UInt32(1),
        "Bearers": bearers,
        "OwnNumbers": dbus.Array([parameters["number"]], signature="s"),
        "Sim": dbus.ObjectPath(SIM),
        "Device": dbus.String("/dev/null"),
        "EquipmentIdentifier": dbus.String("1"),
        "PowerState": dbus.UInt32(3),
    }, [("ListBearers", "", "ao", "ret = ['%s']" % BEARER)])
    modem = dbusmock.get_object(MODEM)
    modem.AddProperties(MESSAGING, {
        "Messages": dbus.Array([], signature="o"),
        "SupportedStorages": dbus.Array([dbus.UInt32(1)], signature="u"),
        "DefaultStorage": dbus.UInt32(1),
    })
    modem.AddMethod(MESSAGING, "List", "", "ao", list_messages)
    modem.AddMethod(MESSAGING, "Delete", "o", "", delete_message)
