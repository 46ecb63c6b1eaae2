// SPDX-FileCopyrightText: 2026 The wmsg authors
// SPDX-License-Identifier: Apache-2.0

import QtQuick
import QtQuick.Controls.Basic
import QtQuick.Dialogs
import QtQuick.Layouts

ApplicationWindow {
    id: window
    required property var messenger
    property url picture

    width: 720
    height: 480
    visible: true
    title: "Messages"
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
                model: window.messenger.people
                delegate: ItemDelegate {
                    required property var modelData
                    width: ListView.view.width
                    highlighted: modelData.number === window.messenger.person
                    onClicked: window.messenger.person = modelData.number
                    contentItem: Column {
                        Label { text: modelData.number; font.bold: true }
                        Label { text: modelData.last; elide: Text.ElideRight; width: parent.width; opacity: 0.7 }
                    }
                }
            }
        }

        ColumnLayout {
            Layout.fillWidth: true
            spacing: 0

            ListView {
                id: messages
                Layout.fillWidth: true
                Layout.fillHeight: true
                Layout.margins: 12
                clip: true
                spacing: 8
                model: window.messenger
                onCountChanged: Qt.callLater(positionViewAtEnd)
                delegate: Item {
                    required property int index
                    required property bool isMine
                    required property string text
                    required property url picture
                    required property double progress
                    required property string state
                    width: messages.width
                    height: bubble.height

                    Rectangle {
                        id: bubble
                        anchors.right: parent.isMine ? parent.right : undefined
                        width: Math.min(parent.width * 0.7, content.implicitWidth + 24)
                        height: content.implicitHeight + 20
                        radius: 12
                        color: parent.isMine ? "#d5e8d0" : "white"
                        Column {
                            id: content
                            x: 12
                            y: 10
                            spacing: 6
                            Image {
                                visible: source != ""
                                source: picture
                                sourceSize.width: 240
                                fillMode: Image.PreserveAspectFit
                            }
                            // Plain text: what somebody sent is shown and never obeyed.
                            Label { visible: text !== ""; text: bubble.parent.text; textFormat: Text.PlainText; wrapMode: Text.Wrap; width: Math.min(implicitWidth, messages.width * 0.6) }
                            ProgressBar { visible: progress < 1; value: progress; width: 160 }
                            Row {
                                spacing: 8
                                Label { visible: isMine; text: bubble.parent.state; font.pixelSize: 11; opacity: 0.6 }
                                ToolButton { visible: progress < 1; text: "Cancel"; onClicked: window.messenger.cancel(index) }
                            }
                        }
                    }
                }
            }

            RowLayout {
                Layout.fillWidth: true
                Layout.margins: 12
                TextField { visible: window.messenger.people.length === 0; placeholderText: "+15550100"; onEditingFinished: window.messenger.person = text }
                ToolButton { text: window.picture == "" ? "Picture…" : "Picture ✓"; onClicked: chooser.open() }
                TextField { id: typed; Layout.fillWidth: true; placeholderText: "Message"; onAccepted: go.clicked() }
                Button {
                    id: go
                    text: "Send"
                    onClicked: { window.messenger.send(typed.text, window.picture); typed.clear(); window.picture = "" }
                }
            }
        }
    }

    FileDialog { id: chooser; nameFilters: ["Pictures (*.png *.jpg *.jpeg *.gif)"]; onAccepted: window.picture = selectedFile }
}
