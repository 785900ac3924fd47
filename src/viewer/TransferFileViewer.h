#pragma once

#include <QPointer>
#include <QWidget>

class ProgramState;
class QButtonGroup;
class QLabel;
class QListWidget;
class QPushButton;
class QGroupBox;

// "Remitra Files": looks at any of the nine transfer files line by line and,
// when a technician asks for it, deletes one. Modeless; open() keeps a single
// instance.
class TransferFileViewer : public QWidget
{
    Q_OBJECT

public:
    TransferFileViewer(ProgramState &state, QWidget *parent = nullptr);

    // Shows the one viewer, creating it (deleted when closed) if needed, and
    // brings it to the front.
    static TransferFileViewer *open(ProgramState &state, QWidget *parent = nullptr);
    // The same, showing one given file (a path relative to the program's
    // folder, such as an archived copy) instead of a choice of the list.
    // Such a file is for viewing only: it cannot be deleted from here.
    static TransferFileViewer *openFile(
        ProgramState &state, const QString &relativePath, QWidget *parent = nullptr);
    void showGivenFile(const QString &relativePath);

    // The file names of the nine choices, in order, as they are opened.
    QStringList fileNames() const;

public slots:
    void chooseFile(int index);
    void deleteFile();
    void exitScreen();

private:
    void load();
    void checkFile();
    void showFile();
    // A warning before deleting a file that payments depend on; "" for
    // the others.
    QString moneyWarning() const;

    ProgramState &m_state;
    QString m_currentName;
    bool m_fileExists = false;

    QLabel *m_labHeading;
    QGroupBox *m_optFiles;
    QButtonGroup *m_choices;
    QLabel *m_labShown;
    QListWidget *m_lstFileContents;
    QPushButton *m_cmdDelete;
    QPushButton *m_cmdExit;

    static QPointer<TransferFileViewer> s_instance;
};
