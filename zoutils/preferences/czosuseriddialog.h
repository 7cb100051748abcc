#pragma once
// The user selection dialog that CPLPreferenceManager::selectUser runs: pick
// a user and give the password, add a user, or delete one (its password
// first). The manager reads the chosen name from the combo box once the
// dialog is accepted; accepting "_none_" chooses nobody.

#include "zoutils_export.h"

#include <QDialog>
#include <QScopedPointer>

class CPLPreferenceManager;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
namespace Ui { class CZOSUserIDDialogForm; }

class ZOUTILS_EXPORT CZOSUserIDDialog : public QDialog
{
    Q_OBJECT
public:
    // `manager` is borrowed and must outlive the dialog.
    explicit CZOSUserIDDialog(CPLPreferenceManager *manager, QWidget *parent = nullptr);
    ~CZOSUserIDDialog() override;

    QComboBox *userComboBox() const;
    QLineEdit *passwordEdit() const;
    QLineEdit *newUserEdit() const;
    QLineEdit *newPasswordEdit() const;
    QPushButton *addButton() const;
    QPushButton *deleteButton() const;
    // Why the last action was refused; empty after a success.
    QString message() const;

public slots:
    // Accepts when the chosen user's password matches (or nobody is chosen).
    void accept() override;

private slots:
    void addUser();
    void deleteUser();

private:
    void refillUsers(const QString &select);
    bool checkChosenPassword();
    void showMessage(const QString &text);

    QScopedPointer<Ui::CZOSUserIDDialogForm> m_pUi;
    CPLPreferenceManager *m_pManager; // borrowed
};
