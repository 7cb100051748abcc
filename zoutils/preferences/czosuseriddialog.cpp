#include "czosuseriddialog.h"
#include "ui_czosuseriddialog.h"

#include "cplpreferencemanager.h"
#include "cplpreferenceuser.h"
#include "zopreferencetexts_p.h"

CZOSUserIDDialog::CZOSUserIDDialog(CPLPreferenceManager *manager, QWidget *parent)
    : QDialog(parent)
    , m_pUi(new Ui::CZOSUserIDDialogForm)
    , m_pManager(manager)
{
    m_pUi->setupUi(this);
    connect(m_pUi->buttonBox, &QDialogButtonBox::accepted, this, &CZOSUserIDDialog::accept);
    connect(m_pUi->buttonBox, &QDialogButtonBox::rejected, this, &CZOSUserIDDialog::reject);
    connect(m_pUi->addButton, &QPushButton::clicked, this, &CZOSUserIDDialog::addUser);
    connect(m_pUi->deleteButton, &QPushButton::clicked, this, &CZOSUserIDDialog::deleteUser);
    // Typing in the password field and pressing Enter logs in.
    m_pUi->buttonBox->button(QDialogButtonBox::Ok)->setDefault(true);
}

CZOSUserIDDialog::~CZOSUserIDDialog() = default;

QComboBox *CZOSUserIDDialog::userComboBox() const { return m_pUi->userComboBox; }
QLineEdit *CZOSUserIDDialog::passwordEdit() const { return m_pUi->passwordEdit; }
QLineEdit *CZOSUserIDDialog::newUserEdit() const { return m_pUi->newUserEdit; }
QLineEdit *CZOSUserIDDialog::newPasswordEdit() const { return m_pUi->newPasswordEdit; }
QPushButton *CZOSUserIDDialog::addButton() const { return m_pUi->addButton; }
QPushButton *CZOSUserIDDialog::deleteButton() const { return m_pUi->deleteButton; }
QString CZOSUserIDDialog::message() const { return m_pUi->messageLabel->text(); }

void CZOSUserIDDialog::showMessage(const QString &text)
{
    m_pUi->messageLabel->setText(text);
}

bool CZOSUserIDDialog::checkChosenPassword()
{
    const QString name = m_pUi->userComboBox->currentText();
    const int index = m_pManager ? m_pManager->getUserIndex(name) : -1;
    CPLPreferenceUser *user = index >= 0 ? (*m_pManager)[unsigned(index)] : nullptr;
    if (!user) {
        showMessage(tr("Choose a user first."));
        return false;
    }
    if (!user->checkPassword(m_pUi->passwordEdit->text())) {
        showMessage(tr("The password for %1 is not correct.").arg(name));
        m_pUi->passwordEdit->selectAll();
        m_pUi->passwordEdit->setFocus();
        return false;
    }
    return true;
}

void CZOSUserIDDialog::accept()
{
    const QString name = m_pUi->userComboBox->currentText();
    const bool known = m_pManager && m_pManager->getUserIndex(name) >= 0;
    if (known && !checkChosenPassword())
        return;
    showMessage(QString());
    QDialog::accept();
}

void CZOSUserIDDialog::refillUsers(const QString &select)
{
    QComboBox *combo = m_pUi->userComboBox;
    combo->clear();
    QStringList *names = nullptr;
    if (m_pManager && m_pManager->getAllUserNames(&names) == ES_SUCCESS)
        combo->addItems(*names);
    if (combo->count() == 0)
        combo->addItem(zoprefs::kNoUser);
    const int index = combo->findText(select);
    if (index >= 0)
        combo->setCurrentIndex(index);
}

void CZOSUserIDDialog::addUser()
{
    if (!m_pManager)
        return;
    const QString name = m_pUi->newUserEdit->text().trimmed().toUpper();
    // The manager would log an existing user in without a password; refuse here.
    if (m_pManager->getUserIndex(name) >= 0) {
        showMessage(tr("The user %1 exists already.").arg(name));
        return;
    }
    int index = -1;
    const QString password = m_pUi->newPasswordEdit->text();
    if (m_pManager->addUser(name, &index, password) != ES_SUCCESS || index < 0) {
        showMessage(tr("User initials must be two or three characters."));
        return;
    }
    CPLPreferenceUser *user = (*m_pManager)[unsigned(index)];
    if (user && user->saveData() != ES_SUCCESS) {
        showMessage(tr("The profile of %1 could not be saved.").arg(name));
    } else {
        showMessage(QString());
    }
    refillUsers(name);
    m_pUi->passwordEdit->setText(password);
    m_pUi->newUserEdit->clear();
    m_pUi->newPasswordEdit->clear();
}

void CZOSUserIDDialog::deleteUser()
{
    if (!m_pManager || !checkChosenPassword())
        return;
    m_pManager->deleteUser(m_pUi->userComboBox->currentText());
    m_pUi->passwordEdit->clear();
    showMessage(QString());
    refillUsers(QString());
}
