-- The repair shop's management database, as far as the report server reads it.
--
-- Customers and their vehicles; work orders (wo) with their lines (woparts) and the payments taken
-- against them (wopaymentadv). One wo row is one document: an open work order, an estimate
-- (estid), a voided work order (chkvoid), an invoice (invoiceid) or a credit invoice (credid,
-- with invoiceid 0). Every line carries the woid, invoiceid, credid and estid of its work order.
-- Money columns hold the amounts as shown on the invoice; the screen* columns of a work order are
-- the totals of its lines, leaving out skipped lines (skip = 'Yes') and the content lines of
-- preset packages (presetpkg = 1 and presetheader = 0), whose header line carries the price.
--
-- Stock: inventory items with their transactions (invtrans), suppliers, and one purchase table per
-- supplier (suph followed by the supplier id; see supplier_purchases.sql). Preset jobs
-- (jobheader) and the target margins per sales class and cost band
-- (SalesClassInventoryIndexPricing).
--
-- Staff: users (usertable); a user is a technician when a mechanic row has the user's id;
-- time-clock entries per work order (timeclock).
--
-- Bookkeeping: the chart of accounts (a tree through parentid, sublevel 0 at the top; classes A,
-- L, Q, R, E in fivetypename), the general-ledger postings (a positive amt is a debit; srcmod and
-- srcid/srcid2 name the document and the party that caused the posting; the postings of one
-- transid sum to zero) and the fiscal years. Account 9 is the receivables control account,
-- account 10 the payables control account, which also holds the sales-tax balances.
--
-- Shop settings: GlobalVars2, globalvars and machine hold one row each.
--
-- Statements are separated by semicolons; CREATE INDEX statements come last. A database loaded in
-- bulk is analysed afterwards (ANALYZE): the plans of the joins above depend on its statistics.

CREATE TABLE customer (
  cusid int NOT NULL PRIMARY KEY,
  company varchar(60),
  fname varchar(30),
  lname varchar(30),
  street varchar(60),
  city varchar(40),
  province varchar(20),
  postal varchar(10),
  ahtel varchar(3),
  htel varchar(8),
  abtel varchar(3),
  btel varchar(8),
  chksolicit bit NOT NULL,
  tx1exempt varchar(20),
  tx2exempt varchar(20)
);

CREATE TABLE vehicle (
  vehid int NOT NULL PRIMARY KEY,
  cusid int NOT NULL,
  Year int,
  Make varchar(30),
  Model varchar(30),
  Plate varchar(10),
  VIN varchar(17),
  unitno varchar(10),
  engsize varchar(10)
);

CREATE TABLE wo (
  woid int NOT NULL PRIMARY KEY,
  cusid int NOT NULL,
  vehid int NOT NULL,
  invoiceid int NOT NULL,
  credid int NOT NULL,
  estid int NOT NULL,
  stateandnumber varchar(20),
  wodeleted bit NOT NULL,
  chkvoid bit NOT NULL,
  chkestpending bit NOT NULL,
  archive bit NOT NULL,
  wodate datetime,
  wotime varchar(8),
  latestdate datetime,
  invoicetime varchar(8),
  defmechuserid varchar(10),
  cmbServiceWriter varchar(40),
  ponum varchar(20),
  txtOdometer varchar(10),
  Summary varchar(255),
  txtCustomerRequests text,
  OPTIONSmessage text,
  OPTIONSnotetocustomer text,
  screenparts money NOT NULL,
  screentotpartsdisc money NOT NULL,
  screenlabour money NOT NULL,
  screentotlabourdisc money NOT NULL,
  screenother money NOT NULL,
  screenlevy money NOT NULL,
  screentotdiscount money NOT NULL,
  screensubtotal money NOT NULL,
  screentx1 money NOT NULL,
  screentx2 money NOT NULL,
  screentotal money NOT NULL,
  txtPartPERmargin float NOT NULL,
  txtLabourPERmargin float NOT NULL,
  txtOtherPERmargin float NOT NULL,
  txtTotalPERmargin float NOT NULL,
  txtTotalDolMargin money NOT NULL,
  insurencecusid int NOT NULL,
  totalinsurenceinvamt money NOT NULL,
  insurencedeductible money NOT NULL,
  customershiptoid int NOT NULL
);

CREATE TABLE woparts (
  wopartsid int NOT NULL PRIMARY KEY,
  woid int NOT NULL,
  invoiceid int NOT NULL,
  credid int NOT NULL,
  estid int NOT NULL,
  linenum int NOT NULL,
  description varchar(100),
  SalesClass varchar(30) NOT NULL,
  qty float NOT NULL,
  hrs float NOT NULL,
  partsea money NOT NULL,
  totparts money NOT NULL,
  discpart money NOT NULL,
  labour money NOT NULL,
  disclab money NOT NULL,
  otherchargeid int NOT NULL,
  otherchargeamt money NOT NULL,
  othCHRGcost money NOT NULL,
  otherchgdo money NOT NULL,
  levyItemAmount money NOT NULL,
  total money NOT NULL,
  tx varchar(2),
  c varchar(1),
  ok varchar(3),
  needed varchar(3),
  skip varchar(3) NOT NULL,
  presetpkg bit NOT NULL,
  presetheader bit NOT NULL,
  presetjobid int NOT NULL,
  miscid int NOT NULL,
  invinvid int NOT NULL,
  invsupid int NOT NULL,
  invcost money NOT NULL,
  invcorecost money NOT NULL,
  margpartsper float NOT NULL,
  marglabdol money NOT NULL,
  mechuserid varchar(10),
  MECHHOURLYTOT money NOT NULL,
  mechflatrateTot money NOT NULL,
  mechlabtot money NOT NULL,
  mechpartstot money NOT NULL
);

CREATE TABLE wopaymentadv (
  payid int NOT NULL PRIMARY KEY,
  id int NOT NULL,
  trandate datetime,
  type varchar(20),
  payment money NOT NULL
);

CREATE TABLE inventory (
  invid int NOT NULL PRIMARY KEY,
  partnum varchar(25),
  Description varchar(100),
  Category varchar(30),
  Manufacturer varchar(30),
  Location varchar(20),
  supid int NOT NULL,
  QOH float NOT NULL,
  LastList money NOT NULL,
  LastCost money NOT NULL
);

CREATE TABLE invtrans (
  invtransid int NOT NULL PRIMARY KEY,
  invid int NOT NULL,
  transdate datetime,
  qty float NOT NULL,
  costea money NOT NULL,
  coresea money NOT NULL
);

CREATE TABLE supplier (
  supid int NOT NULL PRIMARY KEY,
  company varchar(60),
  contact varchar(40)
);

CREATE TABLE jobheader (
  jobid int NOT NULL PRIMARY KEY,
  jobnum varchar(20),
  description varchar(60)
);

CREATE TABLE SalesClassInventoryIndexPricing (
  pricingid int NOT NULL PRIMARY KEY,
  salesclass varchar(30),
  CostFrom money NOT NULL,
  CostTo money NOT NULL,
  profitMargin float NOT NULL
);

CREATE TABLE usertable (
  UserID varchar(10) NOT NULL PRIMARY KEY,
  usertype varchar(30),
  FName varchar(30),
  LName varchar(30)
);

CREATE TABLE mechanic (
  userid varchar(10) NOT NULL PRIMARY KEY,
  hourlyrate money NOT NULL,
  flatrate money NOT NULL
);

CREATE TABLE timeclock (
  timeclockid int NOT NULL PRIMARY KEY,
  woid int NOT NULL,
  userid varchar(10),
  thedate datetime,
  hrs float NOT NULL,
  thehourlyrate money NOT NULL
);

CREATE TABLE chartofaccounts (
  chid int NOT NULL PRIMARY KEY,
  parentid int NOT NULL,
  accountnumber int NOT NULL,
  accountname varchar(60),
  type varchar(10),
  sublevel int NOT NULL,
  fivetypename char(1)
);

CREATE TABLE ChartOfAccountsGLPOSTINGTABLE (
  glid int NOT NULL PRIMARY KEY,
  transid int NOT NULL,
  chid int NOT NULL,
  transdate datetime,
  amt money NOT NULL,
  srcmod varchar(20),
  srcid int NOT NULL,
  srcid2 int NOT NULL
);

CREATE TABLE ChartOfAccountsFiscalYearRange (
  fiscalyearid int NOT NULL PRIMARY KEY,
  fiscalyearstartdate datetime,
  fiscalyearenddate datetime
);

CREATE TABLE GlobalVars2 (
  COMPpostal varchar(10),
  COMPstreet varchar(60),
  COMPcity varchar(40),
  COMPaHtel varchar(3),
  COMPhTel varchar(8)
);

CREATE TABLE globalvars (
  ChkPrintInvoiceTIme int,
  INVOICEdefnote text,
  InvDisclaimerFontSize float,
  INVOICEchkdispdisclaimer int,
  INVOICEdefDisclaim text,
  chkInvPrintCustTX1num int,
  chkInvPrintCustTX2num int,
  WOreg varchar(30),
  COMPftel varchar(8),
  COMPaftel varchar(3),
  COMPtx1name varchar(10),
  COMPtx2name varchar(10),
  wochkprintcustomerrequests int,
  INVOICEchkdispcomments int,
  chkINVPrintPartNumbers int
);

CREATE TABLE machine (
  companyname varchar(60)
);

CREATE INDEX ix_vehicle_cusid ON vehicle (cusid);
-- A customer's work orders with what the receivables read of them (credit key, archive flag, date).
CREATE INDEX ix_wo_cusid ON wo (cusid, credid, archive, latestdate);
CREATE INDEX ix_wo_invoiceid ON wo (invoiceid, latestdate);
CREATE INDEX ix_wo_credid ON wo (credid);
CREATE INDEX ix_wo_latestdate ON wo (latestdate);
-- A period's invoices and credits found from the index alone, keys included, before any line is read.
CREATE INDEX ix_wo_date_keys ON wo (latestdate, invoiceid, credid, woid, wodeleted);
CREATE INDEX ix_woparts_woid ON woparts (woid);
-- One sales class of each work order's lines: the per-class sums read only that class's lines.
CREATE INDEX ix_woparts_woid_class ON woparts (woid, SalesClass);
-- Most lines carry the placeholder 0 in invoiceid or credid, so a plain index on either key sends a
-- join into a loop over every line of the other kind. The partial indexes hold only real keys and
-- serve the joins that say "<> 0"; the composite ones let a join on all three keys, on the invoice
-- and its preset jobs, or on a sales class and its invoices (skipped lines too), reject lines from
-- the index alone.
CREATE INDEX ix_woparts_invoiceid ON woparts (invoiceid, presetjobid);
CREATE INDEX ix_woparts_credid ON woparts (credid);
CREATE INDEX ix_woparts_invoice_set ON woparts (invoiceid) WHERE invoiceid <> 0;
CREATE INDEX ix_woparts_credit_set ON woparts (credid) WHERE credid <> 0;
CREATE INDEX ix_woparts_keys ON woparts (invoiceid, credid, estid, mechuserid);
CREATE INDEX ix_woparts_class ON woparts (SalesClass, invoiceid, skip);
CREATE INDEX ix_wopaymentadv_id ON wopaymentadv (id);
CREATE INDEX ix_invtrans_invid ON invtrans (invid);
CREATE INDEX ix_timeclock_woid ON timeclock (woid);
-- The ledger is summed per account up to a date, by source and kind of posting: every column those
-- sums read is in the index, so they never visit the table's million rows.
CREATE INDEX ix_glposting_chid ON ChartOfAccountsGLPOSTINGTABLE (chid, transdate, srcmod, srcid, srcid2, amt);
CREATE INDEX ix_glposting_srcid ON ChartOfAccountsGLPOSTINGTABLE (srcid);
