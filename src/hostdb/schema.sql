-- The Dwellix host tables as Remitra knows them: exactly the fields and
-- indexes it reads and writes, and nothing else, so that the demo site and
-- every test work on no more than a real host database offers. Remitra adds
-- nothing to these tables; anything it keeps for itself lives elsewhere.
-- Identifiers are INTEGER, money REAL rounded to 4 places, dates ISO text
-- (YYYY-MM-DD); text compares without regard to case, as the host does.
-- The counters CkID of the two check tables are the host's own keys.
-- Statements are separated by a line holding only ";;".

CREATE TABLE IF NOT EXISTS Company (
    CName1      TEXT COLLATE NOCASE,
    CEmail1     TEXT COLLATE NOCASE,
    CPhone1     TEXT COLLATE NOCASE,
    CPhone2     TEXT COLLATE NOCASE
)
;;
CREATE TABLE IF NOT EXISTS Owners (
    OwnerID     INTEGER NOT NULL,
    OFirstName1 TEXT COLLATE NOCASE,
    OLastName1  TEXT COLLATE NOCASE,
    OFirstName2 TEXT COLLATE NOCASE,
    OLastName2  TEXT COLLATE NOCASE,
    OAddress1   TEXT COLLATE NOCASE,
    OAddress2   TEXT COLLATE NOCASE,
    OCity       TEXT COLLATE NOCASE,
    OState      TEXT COLLATE NOCASE,
    OZip        TEXT COLLATE NOCASE,
    OPhone1     TEXT COLLATE NOCASE,
    OPhone2     TEXT COLLATE NOCASE,
    OEmail1     TEXT COLLATE NOCASE,
    OACH        TEXT COLLATE NOCASE,
    OPercent2   TEXT COLLATE NOCASE,
    OMgmtFee    TEXT COLLATE NOCASE,
    OCurrBal    REAL DEFAULT 0
)
;;
CREATE UNIQUE INDEX IF NOT EXISTS OwnerIDIndex ON Owners (OwnerID)
;;
CREATE TABLE IF NOT EXISTS Properties (
    PropID       INTEGER NOT NULL,
    POwnerID     INTEGER,
    PropName     TEXT COLLATE NOCASE,
    PropAddress1 TEXT COLLATE NOCASE,
    PropAddress2 TEXT COLLATE NOCASE,
    PropCity     TEXT COLLATE NOCASE,
    PropState    TEXT COLLATE NOCASE,
    PropZip      TEXT COLLATE NOCASE,
    CName1       TEXT COLLATE NOCASE,
    CEmail1      TEXT COLLATE NOCASE,
    CPhone1      TEXT COLLATE NOCASE,
    CPhone2      TEXT COLLATE NOCASE,
    PCurrBal     REAL DEFAULT 0
)
;;
CREATE UNIQUE INDEX IF NOT EXISTS PropIDIndex ON Properties (PropID)
;;
CREATE TABLE IF NOT EXISTS Tenants (
    TenantID    INTEGER NOT NULL,
    TPropID     INTEGER,
    TFirstName1 TEXT COLLATE NOCASE,
    TLastName1  TEXT COLLATE NOCASE,
    TAddress    TEXT COLLATE NOCASE,
    TCity       TEXT COLLATE NOCASE,
    TState      TEXT COLLATE NOCASE,
    TZip        TEXT COLLATE NOCASE,
    TEmail1     TEXT COLLATE NOCASE,
    TEmail2     TEXT COLLATE NOCASE,
    TACH        TEXT COLLATE NOCASE,
    TCurrBal    REAL DEFAULT 0,
    TStartDate  TEXT
)
;;
CREATE UNIQUE INDEX IF NOT EXISTS TenantIDIndex ON Tenants (TenantID)
;;
CREATE TABLE IF NOT EXISTS Units (
    UTenantID   INTEGER,
    UAddress    TEXT COLLATE NOCASE,
    UNumber     TEXT COLLATE NOCASE,
    UCurrBal    REAL DEFAULT 0
)
;;
CREATE INDEX IF NOT EXISTS UTenantIDIndex ON Units (UTenantID)
;;
CREATE TABLE IF NOT EXISTS Vendors (
    VenID       INTEGER NOT NULL,
    VenName     TEXT COLLATE NOCASE,
    VenAddress1 TEXT COLLATE NOCASE,
    VenAddress2 TEXT COLLATE NOCASE,
    VenCity     TEXT COLLATE NOCASE,
    VenState    TEXT COLLATE NOCASE,
    VenZip      TEXT COLLATE NOCASE,
    VenContact  TEXT COLLATE NOCASE,
    VenPhone1   TEXT COLLATE NOCASE,
    VenPhone2   TEXT COLLATE NOCASE,
    VenEmail1   TEXT COLLATE NOCASE,
    VACH        TEXT COLLATE NOCASE
)
;;
CREATE TABLE IF NOT EXISTS Transactions (
    TransAccountID   INTEGER,
    TransPostToID    INTEGER,
    TransAmount      REAL,
    TransDate        TEXT,
    TransCheckNumber INTEGER,
    TransRemark      TEXT COLLATE NOCASE,
    TransType        TEXT COLLATE NOCASE,
    TransStatus      TEXT COLLATE NOCASE,
    TransTax         TEXT COLLATE NOCASE,
    TransOID         INTEGER,
    TransPID         INTEGER,
    TransUID         INTEGER,
    TransTID         INTEGER
)
;;
CREATE TABLE IF NOT EXISTS CheckEntered (
    CkID        INTEGER PRIMARY KEY AUTOINCREMENT,
    CkPayee     TEXT COLLATE NOCASE,
    CkDate      TEXT,
    CkAmount    REAL,
    CkInvoice   TEXT COLLATE NOCASE,
    CkRemark    TEXT COLLATE NOCASE,
    CkVendorID  INTEGER,
    CkStatus    TEXT COLLATE NOCASE,
    CkSplit     TEXT COLLATE NOCASE,
    CkAccountID INTEGER,
    CkPostToID  INTEGER,
    CkPostTo    TEXT COLLATE NOCASE,
    CkNumber    INTEGER,
    CkType      TEXT COLLATE NOCASE
)
;;
CREATE TABLE IF NOT EXISTS CheckDepPrinted (
    CkID         INTEGER PRIMARY KEY AUTOINCREMENT,
    CkPayee      TEXT COLLATE NOCASE,
    CkAccountID  INTEGER,
    CkAmount     REAL,
    CkDate       TEXT,
    CkInvoice    TEXT COLLATE NOCASE,
    CkRemark     TEXT COLLATE NOCASE,
    CkStatus     TEXT COLLATE NOCASE,
    CkVendorID   INTEGER,
    CkPostTo     TEXT COLLATE NOCASE,
    CkPostToText TEXT COLLATE NOCASE,
    CkNumber     INTEGER,
    CkType       TEXT COLLATE NOCASE,
    CkSplit      TEXT COLLATE NOCASE
)
;;
CREATE TABLE IF NOT EXISTS SplitChecks (
    CkNumber    INTEGER,
    CkAmount    REAL,
    CkAccountID INTEGER,
    CkPostToID  INTEGER,
    CkRemark    TEXT COLLATE NOCASE,
    CkStatus    TEXT COLLATE NOCASE,
    CkType      TEXT COLLATE NOCASE,
    CkPostTo    TEXT COLLATE NOCASE
)
;;
CREATE TABLE IF NOT EXISTS SplitPrintedChecks (
    CkNumber      INTEGER,
    CkCheckNumber INTEGER,
    CkAmount      REAL,
    CkAccountID   INTEGER,
    CkPostToID    INTEGER,
    CkRemark      TEXT COLLATE NOCASE,
    CkStatus      TEXT COLLATE NOCASE,
    CkType        TEXT COLLATE NOCASE,
    CkPostTo      TEXT COLLATE NOCASE
)
