// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Dialogs
import QtQuick.Layouts

ApplicationWindow {
    id: window
    required property var messenger
    required property var asked // what the command line says
    property string person: asked.to
    property url picture

    width: 720
    height: 600
    visible: true
    title: "Messages"

    ListModel { id: people }
    ListModel { id: messages } // whose picture is a URL as text

    function add(number, message) {
        const known = [...Array(people.count).keys()].find(row => people.get(row).number === number)
        if (known !== undefined) people.remove(known)
        people.insert(0, { number: number, last: message.text || "A picture" })
        messages.append(Object.assign({ person: number, isMine: false, isUnderWay: false, progress: 0, request: -1, state: "" }, message))
        list.positionViewAtEnd()
    }
    function send(text, picture) {
        const request = messenger.send(person, text, picture)
        add(person, { isMine: true, text: text, picture: String(picture), request: request, isUnderWay: request >= 0,
                      state: request < 0 ? "not sent" : "sending" })
    }
    function change(request, what) {
        for (let row = 0; row < messages.count; ++row)
            if (messages.get(row).isUnderWay && messages.get(row).request === request)
                messages.set(row, what)
        grabOnceSettled()
    }
    function grabOnceSettled() {
        const rows = [...Array(messages.count).keys()].map(row => messages.get(row))
        if (asked.grab && rows.some(row => row.isMine) && rows.some(row => !row.isMine) && !rows.some(row => row.isUnderWay))
            everything.grabToImage(shot => Qt.exit(shot.saveToFile(asked.grab) ? 0 : 1))
    }
    Component.onCompleted: if (asked.text || asked.picture) send(asked.text, asked.picture)

    Connections {
        target: window.messenger
        function onArrived(number, text, picture) {
            window.person = window.person || number
            window.add(number, { text: text, picture: String(picture) })
            window.grabOnceSettled()
        }
        function onMoved(request, progress) { window.change(request, { progress: progress }) }
        function onTold(request, status) {
            const triedAgain = 256
            window.change(request, status === triedAgain ? { state: "waiting for the network" }
                : { isUnderWay: false, state: status === 0 ? "sent" : `not sent (${status})` })
        }
    }

    Rectangle {
        id: everything
        anchors.fill: parent
        color: "#f4f2ee"

        RowLayout {
            anchors.fill: parent
            spacing: 0

            Rectangle {
                Layout.fillHeight: true
                Layout.preferredWidth: 220
                color: "#e7e2d8"

                ListView {
                    anchors.fill: parent
                    model: people
                    delegate: ItemDelegate {
                        required property string number
                        required property string last
                        width: ListView.view.width
                        highlighted: number === window.person
                        onClicked: window.person = number
                        contentItem: Column {
                            Label { text: number; font.bold: true }
                            Label { text: last; elide: Text.ElideRight; width: parent.width; opacity: 0.7 }
                        }
                    }
                }
            }

            ColumnLayout {
                Layout.fillWidth: true
                spacing: 0

                ListView {
                    id: list
                    Layout.fillWidth: true
                    Layout.fillHeight: true
                    Layout.margins: 12
                    clip: true
                    model: messages
                    delegate: Item {
                        required property var model
                        visible: model.person === window.person
                        width: list.width
                        height: visible ? bubble.height + 8 : 0

                        Rectangle {
                            id: bubble
                            anchors.right: model.isMine ? parent.right : undefined
                            width: Math.min(parent.width * 0.7, content.implicitWidth + 24)
                            height: content.implicitHeight + 20
                            radius: 12
                            color: model.isMine ? "#d5e8d0" : "white"
                            Column {
                                id: content
                                x: 12; y: 10; spacing: 6
                                Image { visible: source != ""; source: model.picture; sourceSize.width: 240; fillMode: Image.PreserveAspectFit }
                                // Plain text: what somebody sent is shown and never obeyed.
                                Label { visible: text !== ""; text: model.text; textFormat: Text.PlainText; wrapMode: Text.Wrap; width: Math.min(implicitWidth, list.width * 0.6) }
                                ProgressBar { visible: model.isUnderWay; value: model.progress; width: 160 }
                                Row {
                                    spacing: 8
                                    Label { visible: model.isMine; text: model.state; font.pixelSize: 11; opacity: 0.6 }
                                    ToolButton { visible: model.isUnderWay; text: "Cancel"; onClicked: window.messenger.cancel(model.request) }
                                }
                            }
                        }
                    }
                }

                RowLayout {
                    Layout.fillWidth: true
                    Layout.margins: 12
                    TextField { visible: people.count === 0; placeholderText: "+15550100"; onEditingFinished: window.person = text }
                    ToolButton { text: window.picture == "" ? "Picture…" : "Picture ✓"; onClicked: chooser.open() }
                    TextField { id: typed; Layout.fillWidth: true; placeholderText: "Message"; onAccepted: go.clicked() }
                    Button { id: go; text: "Send"; onClicked: { window.send(typed.text, window.picture); typed.clear(); window.picture = "" } }
                }
            }
        }
    }

    FileDialog { id: chooser; nameFilters: ["Pictures (*.png *.jpg *.jpeg *.gif)"]; onAccepted: window.picture = selectedFile }
}
