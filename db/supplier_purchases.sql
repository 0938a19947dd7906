-- The purchases from one supplier. Every supplier has its own table, named suph followed by the
-- supplier id (suph12 for supplier 12); {supid} stands for that id. purchase is the amount of one
-- supplier invoice before tax, purchdate its date.
CREATE TABLE suph{supid} (
  purchid int NOT NULL PRIMARY KEY,
  purchdate datetime,
  refnum varchar(20),
  purchase money NOT NULL
);
