-- A data folder with tables of version 2: lumo-centre of that version ran init, add-company, add-user, add-box, import, add-area and add-version; its links and comments were added by SQL.
-- token: zm6COzDwDLw7luufa3c6-NLcQPUoALe3i3PUN5hDpNY
PRAGMA journal_mode = WAL;
BEGIN;
CREATE TABLE company (
    id INTEGER PRIMARY KEY CHECK (id BETWEEN 1 AND 4294967294),
    companyno TEXT NOT NULL UNIQUE);
CREATE TABLE user (
    id INTEGER PRIMARY KEY CHECK (id BETWEEN 1 AND 4294967294),
    username TEXT NOT NULL UNIQUE,
    company_id INTEGER NOT NULL REFERENCES company(id),
    token_hash BLOB NOT NULL UNIQUE, may_write INTEGER NOT NULL DEFAULT 1);
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
CREATE INDEX disk_root ON disk(root_path);
CREATE TABLE national_area (
    area_id INTEGER PRIMARY KEY CHECK (area_id BETWEEN 1 AND 4294967294),
    area_name TEXT NOT NULL,
    parent_id INTEGER REFERENCES national_area(area_id));
CREATE INDEX national_area_parent ON national_area(parent_id);
CREATE TABLE version (
    kind INTEGER NOT NULL CHECK (kind IN (1, 2)),
    number TEXT NOT NULL,
    place BLOB NOT NULL,
    versionno TEXT NOT NULL,
    name TEXT NOT NULL,
    kesta_code TEXT NOT NULL REFERENCES box(code),
    app_full_path TEXT NOT NULL,
    released TEXT NOT NULL,
    notes TEXT,
    PRIMARY KEY (kind, number, place)) WITHOUT ROWID;
CREATE INDEX version_box ON version(kesta_code);
CREATE INDEX version_path ON version(app_full_path);
INSERT INTO company(id, companyno) VALUES (1, 'LUMO');
INSERT INTO company(id, companyno) VALUES (2, 'OTHER');
INSERT INTO user(id, username, company_id, token_hash, may_write) VALUES (1, 'demo', 1, X'2FD45FC4ADA14FBBB7B52423F99EDAA16022872D413C94F41ABD49F29E7DDC3D', 1);
INSERT INTO user(id, username, company_id, token_hash, may_write) VALUES (2, 'guest', 2, X'BA845170F92509413A6CABB451C9AA973A1C350E0F284CCDADBF02264518AEE6', 1);
INSERT INTO user(id, username, company_id, token_hash, may_write) VALUES (3, 'reader', 1, X'A8D4060E453E37FFDEC173DBC87FDABF7D60BB97325B26F61F37A95E52D26AE9', 0);
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
INSERT INTO national_area(area_id, area_name) VALUES (1, '华北');
INSERT INTO national_area(area_id, area_name, parent_id) VALUES (11, '北京', 1);
INSERT INTO version(kind, number, place, versionno, name, kesta_code, app_full_path, released, notes) VALUES (1, 'viewer', X'0501310405013902', '1.9', 'viewer', 'B1', '/tmp/disk-package', '2026-01-31', '第一版');
INSERT INTO version(kind, number, place, versionno, name, kesta_code, app_full_path, released, notes) VALUES (1, 'viewer', X'050131040502313002', '1.10', 'viewer', 'B1', '/tmp/disk-package', '2026-01-31', '第一版');
PRAGMA application_id = 1280658767;
PRAGMA user_version = 2;
COMMIT;
