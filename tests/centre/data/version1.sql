-- A data folder with tables of version 1: lumo-centre of that version ran init, add-company, add-user, add-box and import; its links and comments were added by SQL.
-- token: CMl8tbDKF4c1buUyZdTw_p1JAtGiT35jAkSA9TMv-fY
PRAGMA journal_mode = WAL;
BEGIN;
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
INSERT INTO company(id, companyno) VALUES (1, 'LUMO');
INSERT INTO company(id, companyno) VALUES (2, 'OTHER');
INSERT INTO user(id, username, company_id, token_hash) VALUES (1, 'demo', 1, X'E963C06C0500E5629E8DFF2F9467292013294BB03CE5191D14B7478E1D291FF2');
INSERT INTO user(id, username, company_id, token_hash) VALUES (2, 'guest', 2, X'45B7C86EF1EEF3EBA93D6BA6CC19B1EC2F58E01B93C291BB456390809B7C83AC');
INSERT INTO box(code, address) VALUES ('B1', '127.0.0.1:7001');
INSERT INTO disk(id, root_path, name, kesta_code, company_id, address_kind) VALUES (1, '/tmp/disk', 'pictures', 'B1', 1, 1);
INSERT INTO folder(id, parent_id, name, disk_id) VALUES (1, 0, 'pictures', 1);
INSERT INTO folder(id, parent_id, name, disk_id) VALUES (2, 1, '影像', 1);
INSERT INTO folder(id, parent_id, name, disk_id) VALUES (3, 2, '2024', 1);
INSERT INTO file(id, parent_id, name) VALUES (1, 1, 'readme');
INSERT INTO file(id, parent_id, name) VALUES (2, 2, 'a.tif');
INSERT INTO file(id, parent_id, name) VALUES (3, 3, 'b''s.tif');
INSERT INTO data_folder(project_id, src_id) VALUES (1, 2);
INSERT INTO data_file(project_id, file_id) VALUES (1, 1);
INSERT INTO comment_record(comment_id, data_type_id, record_id) VALUES (3, 1, 2);
INSERT INTO comment_record(comment_id, data_type_id, record_id) VALUES (3, 2, 1);
INSERT INTO comment_record(comment_id, data_type_id, record_id) VALUES (7, 1, 2);
PRAGMA application_id = 1280658767;
PRAGMA user_version = 1;
COMMIT;
