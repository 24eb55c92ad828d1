-- A data folder as lumo-centre left it with version 1 of the tables.
PRAGMA application_id = 1280658767;
PRAGMA user_version = 1;
CREATE TABLE company (
    id INTEGER PRIMARY KEY CHECK (id BETWEEN 1 AND 4294967294),
    companyno TEXT NOT NULL UNIQUE);
CREATE TABLE user (
    id INTEGER PRIMARY KEY CHECK (id BETWEEN 1 AND 4294967294),
    username TEXT NOT NULL UNIQUE,
    company_id INTEGER NOT NULL REFERENCES company(id),
    token_hash BLOB NOT NULL UNIQUE);
CREATE TABLE box (
    code TEXT NOT NULL PRIMARY KEY,
    address TEXT NOT NULL) WITHOUT ROWID;
CREATE TABLE disk (
    id INTEGER PRIMARY KEY CHECK (id BETWEEN 1 AND 4294967294),
    root_path TEXT NOT NULL,
    name TEXT NOT NULL,
    ref_id INTEGER,
    kesta_code TEXT REFERENCES box(code),
    company_id INTEGER NOT NULL REFERENCES company(id),
    address_kind INTEGER NOT NULL,
    UNIQUE (company_id, name));
CREATE TABLE folder (
    id INTEGER PRIMARY KEY CHECK (id BETWEEN 1 AND 4294967294),
    parent_id INTEGER NOT NULL,
    name TEXT NOT NULL,
    long_text TEXT,
    short_text TEXT,
    disk_id INTEGER NOT NULL REFERENCES disk(id),
    parent_ref INTEGER GENERATED ALWAYS AS (nullif(parent_id, 0)) VIRTUAL REFERENCES folder(id),
    UNIQUE (disk_id, parent_id, name));
CREATE TABLE file (
    id INTEGER PRIMARY KEY CHECK (id BETWEEN 1 AND 4294967294),
    parent_id INTEGER NOT NULL REFERENCES folder(id),
    name TEXT NOT NULL,
    short_text TEXT,
    long_text TEXT,
    UNIQUE (parent_id, name));
CREATE INDEX folder_page ON folder(parent_id);
CREATE INDEX file_page ON file(parent_id);
CREATE TABLE data_folder (
    project_id INTEGER NOT NULL,
    src_id INTEGER NOT NULL REFERENCES folder(id),
    PRIMARY KEY (project_id, src_id)) WITHOUT ROWID;
CREATE TABLE data_file (
    project_id INTEGER NOT NULL,
    file_id INTEGER NOT NULL REFERENCES file(id),
    PRIMARY KEY (project_id, file_id)) WITHOUT ROWID;
CREATE TABLE comment_record (
    comment_id INTEGER NOT NULL,
    data_type_id INTEGER NOT NULL,
    record_id INTEGER NOT NULL,
    PRIMARY KEY (comment_id, data_type_id, record_id)) WITHOUT ROWID;
INSERT INTO company VALUES (1, 'LUMO');
INSERT INTO box VALUES ('B1', '127.0.0.1:1');
INSERT INTO disk(id, root_path, name, kesta_code, company_id, address_kind) VALUES (1, '/srv', 'disk', 'B1', 1, 1);
INSERT INTO folder(id, parent_id, name, disk_id) VALUES (1, 0, 'disk', 1), (2, 1, 'a', 1);
INSERT INTO file(id, parent_id, name) VALUES (1, 2, 'f');
INSERT INTO data_file VALUES (7, 1);
INSERT INTO comment_record VALUES (9, 1, 2), (8, 1, 2);
INSERT INTO user VALUES (1, 'demo', 1, x'01');
