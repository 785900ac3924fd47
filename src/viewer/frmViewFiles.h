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
class frmViewFiles : public QWidget
{
    Q_OBJECT

public:
    frmViewFiles(ProgramState &state, QWidget *parent = nullptr);

    // Shows the one viewer, creating it (deleted when closed) if needed, and
    // brings it to the front.
    static frmViewFiles *open(ProgramState &state, QWidget *parent = nullptr);
    // The same, showing one given file (a path relative to the program's
    // folder, such as an archived copy) instead of a choice of the list.
    // Such a file is for viewing only: it cannot be deleted from here.
    static frmViewFiles *openFile(
        ProgramState &state, const QString &relativePath, QWidget *parent = nullptr);
    void showGivenFile(const QString &relativePath);

    // The file names of the nine choices, in order, as they are opened.
    QStringList fileNames() const;

public slots:
    void optFiles_Click(int index);
    void cmdDelete_Click();
    void cmdExit_Click();

private:
    void Form_Load();
    void checkFile();
    void showFile();
    // A warning before deleting a file that payments depend on; "" for
    // the others.
    QString moneyWarning() const;

    ProgramState &m_state;
    QString m_currentName;
    bool m_fileExists = false;

    QLabel *labHeading;
    QGroupBox *optFiles;
    QButtonGroup *m_choices;
    QLabel *labShown;
    QListWidget *lstFileContents;
    QPushButton *cmdDelete;
    QPushButton *cmdExit;

    static QPointer<frmViewFiles> s_instance;
};
