-- A data folder with tables of version 4: lumo-centre of that version ran init, add-company, add-user, add-box, import, add-area, add-version and load as version 3; it was brought up to date by that of version 4, and its links and comments were added by SQL.
-- token: tqaZQZUW5CWTDgSSIURy2TyxTbDny5Zb5g6xYAedCFM
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
CREATE TABLE project (
    project_id INTEGER PRIMARY KEY CHECK (project_id BETWEEN 1 AND 4294967294),
    project_name TEXT NOT NULL,
    text1 TEXT,
    text2 TEXT,
    text3 TEXT,
    text4 TEXT,
    text5 TEXT,
    datum TEXT,
    projection TEXT,
    coord_param1 TEXT,
    coord_param2 TEXT,
    coord_param3 TEXT,
    coord_param5 TEXT,
    coord_param4 TEXT,
    coord_param7 TEXT,
    coord_param6 TEXT,
    hemisphere TEXT,
    coord_extra1 TEXT,
    coord_extra2 TEXT,
    coord_extra3 TEXT,
    coord_extra4 TEXT,
    coord_extra5 TEXT,
    coord_extra6 TEXT,
    coord_extra7 TEXT,
    coord_text TEXT,
    text6 TEXT,
    text7 TEXT,
    text8 TEXT,
    company_id INTEGER NOT NULL REFERENCES company(id),
    UNIQUE (company_id, project_name));
CREATE INDEX project_page ON project(company_id);
CREATE TABLE type (
    type_id INTEGER PRIMARY KEY CHECK (type_id BETWEEN 1 AND 4294967294),
    project_id INTEGER NOT NULL REFERENCES project(project_id),
    data_type TEXT NOT NULL,
    type_text TEXT,
    UNIQUE (project_id, data_type));
CREATE INDEX type_page ON type(project_id);
CREATE TABLE photo (
    image_id INTEGER PRIMARY KEY CHECK (image_id BETWEEN 1 AND 4294967294),
    type_id INTEGER NOT NULL REFERENCES type(type_id),
    sensor TEXT,
    date TEXT,
    west REAL,
    south REAL,
    east REAL,
    north REAL,
    main_file_id INTEGER REFERENCES file(id),
    image_name TEXT,
    text2 TEXT,
    text3 TEXT,
    text4 TEXT,
    text5 TEXT,
    text6 TEXT,
    text7 TEXT,
    value1 TEXT,
    value9 TEXT,
    value10 TEXT,
    value2 TEXT,
    count1 TEXT,
    count2 TEXT,
    value3 TEXT,
    value4 TEXT,
    value5 TEXT,
    value6 TEXT,
    value7 TEXT,
    value8 TEXT,
    value11 TEXT,
    text8 TEXT,
    value12 TEXT,
    datum TEXT,
    projection TEXT,
    coord_param1 TEXT,
    coord_param2 TEXT,
    coord_param3 TEXT,
    coord_param5 TEXT,
    coord_param7 TEXT,
    coord_param6 TEXT,
    coord_extra1 TEXT,
    coord_extra2 TEXT,
    coord_extra3 TEXT,
    coord_extra4 TEXT,
    coord_extra5 TEXT,
    coord_extra6 TEXT,
    coord_extra7 TEXT,
    coord_text TEXT,
    coord_param4 TEXT,
    hemisphere TEXT,
    value13 TEXT,
    value14 TEXT,
    text1 TEXT);
CREATE INDEX photo_page ON photo(type_id);
CREATE INDEX photo_sensor ON photo(type_id, sensor, date);
CREATE INDEX photo_date ON photo(type_id, date);
CREATE VIRTUAL TABLE photo_bounds USING rtree(id, west, east, south, north);
CREATE TABLE sat (
    image_id INTEGER PRIMARY KEY CHECK (image_id BETWEEN 1 AND 4294967294),
    type_id INTEGER NOT NULL REFERENCES type(type_id),
    sensor TEXT,
    date TEXT,
    west REAL,
    south REAL,
    east REAL,
    north REAL,
    main_file_id INTEGER REFERENCES file(id),
    image_name TEXT,
    text2 TEXT,
    text3 TEXT,
    value1 TEXT,
    text4 TEXT,
    value2 TEXT,
    value3 TEXT,
    value8 TEXT,
    value9 TEXT,
    value10 TEXT,
    value11 TEXT,
    value4 TEXT,
    value5 TEXT,
    value7 TEXT,
    value12 TEXT,
    value6 TEXT,
    text5 TEXT,
    count1 TEXT,
    count2 TEXT,
    text6 TEXT,
    text7 TEXT,
    datum TEXT,
    projection TEXT,
    coord_param1 TEXT,
    coord_param2 TEXT,
    coord_param3 TEXT,
    coord_param5 TEXT,
    coord_param7 TEXT,
    coord_param6 TEXT,
    coord_extra1 TEXT,
    coord_extra2 TEXT,
    coord_extra3 TEXT,
    coord_extra4 TEXT,
    coord_extra5 TEXT,
    coord_extra6 TEXT,
    coord_extra7 TEXT,
    coord_text TEXT,
    coord_param4 TEXT,
    hemisphere TEXT,
    text1 TEXT);
CREATE INDEX sat_page ON sat(type_id);
CREATE INDEX sat_sensor ON sat(type_id, sensor, date);
CREATE INDEX sat_date ON sat(type_id, date);
CREATE VIRTUAL TABLE sat_bounds USING rtree(id, west, east, south, north);
CREATE TABLE ads (
    image_id INTEGER PRIMARY KEY CHECK (image_id BETWEEN 1 AND 4294967294),
    type_id INTEGER NOT NULL REFERENCES type(type_id),
    sensor TEXT,
    date TEXT,
    west REAL,
    south REAL,
    east REAL,
    north REAL,
    main_file_id INTEGER REFERENCES file(id),
    image_name TEXT,
    text2 TEXT,
    text3 TEXT,
    value2 TEXT,
    value3 TEXT,
    value4 TEXT,
    value5 TEXT,
    count1 TEXT,
    count2 TEXT,
    value6 TEXT,
    text5 TEXT,
    text6 TEXT,
    value1 TEXT,
    text7 TEXT,
    text4 TEXT,
    datum TEXT,
    projection TEXT,
    coord_param1 TEXT,
    coord_param2 TEXT,
    coord_param3 TEXT,
    coord_param5 TEXT,
    coord_param7 TEXT,
    coord_param6 TEXT,
    coord_extra1 TEXT,
    coord_extra2 TEXT,
    coord_extra3 TEXT,
    coord_extra4 TEXT,
    coord_extra5 TEXT,
    coord_extra6 TEXT,
    coord_extra7 TEXT,
    coord_text TEXT,
    coord_param4 TEXT,
    hemisphere TEXT,
    text8 TEXT,
    text1 TEXT);
CREATE INDEX ads_page ON ads(type_id);
CREATE INDEX ads_sensor ON ads(type_id, sensor, date);
CREATE INDEX ads_date ON ads(type_id, date);
CREATE VIRTUAL TABLE ads_bounds USING rtree(id, west, east, south, north);
CREATE TABLE control (
    dq_con_id INTEGER PRIMARY KEY CHECK (dq_con_id BETWEEN 1 AND 4294967294),
    type_id INTEGER NOT NULL REFERENCES type(type_id),
    sensor TEXT,
    date TEXT,
    west REAL,
    south REAL,
    east REAL,
    north REAL,
    main_file_id INTEGER REFERENCES file(id),
    ctrl_file_name TEXT,
    text1 TEXT,
    text2 TEXT,
    value1 TEXT,
    datum TEXT,
    projection TEXT,
    coord_param1 TEXT,
    coord_param2 TEXT,
    coord_param3 TEXT,
    coord_param5 TEXT,
    coord_param7 TEXT,
    coord_param6 TEXT,
    coord_param4 TEXT,
    hemisphere TEXT,
    text9 TEXT,
    coord_extra1 TEXT,
    coord_extra2 TEXT,
    coord_extra3 TEXT,
    coord_extra4 TEXT,
    coord_extra5 TEXT,
    coord_extra6 TEXT,
    coord_extra7 TEXT,
    coord_text TEXT,
    text3 TEXT,
    text4 TEXT,
    text5 TEXT,
    text7 TEXT,
    text6 TEXT,
    text8 TEXT);
CREATE INDEX control_page ON control(type_id);
CREATE INDEX control_sensor ON control(type_id, sensor, date);
CREATE INDEX control_date ON control(type_id, date);
CREATE VIRTUAL TABLE control_bounds USING rtree(id, west, east, south, north);
CREATE TABLE point (
    point_id INTEGER PRIMARY KEY CHECK (point_id BETWEEN 1 AND 4294967294),
    dq_con_id INTEGER NOT NULL REFERENCES control(dq_con_id),
    con_number TEXT,
    point_x TEXT,
    point_y TEXT,
    point_z TEXT,
    point_text TEXT);
CREATE INDEX point_page ON point(dq_con_id);
CREATE TABLE dem (
    image_id INTEGER PRIMARY KEY CHECK (image_id BETWEEN 1 AND 4294967294),
    type_id INTEGER NOT NULL REFERENCES type(type_id),
    sensor TEXT,
    date TEXT,
    west REAL,
    south REAL,
    east REAL,
    north REAL,
    main_file_id INTEGER REFERENCES file(id),
    image_name TEXT,
    text2 TEXT,
    value12 TEXT,
    text3 TEXT,
    count1 TEXT,
    text4 TEXT,
    text5 TEXT,
    text6 TEXT,
    value1 TEXT,
    value2 TEXT,
    value3 TEXT,
    value4 TEXT,
    value5 TEXT,
    value6 TEXT,
    value7 TEXT,
    value8 TEXT,
    text7 TEXT,
    text11 TEXT,
    text8 TEXT,
    text13 TEXT,
    text14 TEXT,
    text9 TEXT,
    text12 TEXT,
    text10 TEXT,
    value9 TEXT,
    value10 TEXT,
    value11 TEXT,
    coord_param3 TEXT,
    datum TEXT,
    projection TEXT,
    coord_param5 TEXT,
    count5 TEXT,
    count6 TEXT,
    text15 TEXT,
    count2 TEXT,
    count3 TEXT,
    count4 TEXT,
    value14 TEXT,
    hemisphere TEXT,
    text16 TEXT,
    coord_param1 TEXT,
    coord_param2 TEXT,
    coord_param4 TEXT,
    coord_param7 TEXT,
    coord_param6 TEXT,
    coord_extra1 TEXT,
    coord_extra2 TEXT,
    coord_extra3 TEXT,
    coord_extra4 TEXT,
    coord_extra5 TEXT,
    coord_extra6 TEXT,
    coord_extra7 TEXT,
    coord_text TEXT,
    value13 TEXT,
    text1 TEXT);
CREATE INDEX dem_page ON dem(type_id);
CREATE INDEX dem_sensor ON dem(type_id, sensor, date);
CREATE INDEX dem_date ON dem(type_id, date);
CREATE VIRTUAL TABLE dem_bounds USING rtree(id, west, east, south, north);
CREATE TABLE dsm (
    image_id INTEGER PRIMARY KEY CHECK (image_id BETWEEN 1 AND 4294967294),
    type_id INTEGER NOT NULL REFERENCES type(type_id),
    sensor TEXT,
    date TEXT,
    west REAL,
    south REAL,
    east REAL,
    north REAL,
    main_file_id INTEGER REFERENCES file(id),
    image_name TEXT,
    text2 TEXT,
    value1 TEXT,
    text3 TEXT,
    count1 TEXT,
    text4 TEXT,
    text5 TEXT,
    text6 TEXT,
    value2 TEXT,
    value3 TEXT,
    value4 TEXT,
    value5 TEXT,
    value6 TEXT,
    value7 TEXT,
    value8 TEXT,
    value9 TEXT,
    coord_param3 TEXT,
    datum TEXT,
    projection TEXT,
    coord_param5 TEXT,
    hemisphere TEXT,
    text9 TEXT,
    text7 TEXT,
    text8 TEXT,
    count2 TEXT,
    count3 TEXT,
    count4 TEXT,
    count5 TEXT,
    coord_param1 TEXT,
    coord_param2 TEXT,
    coord_param4 TEXT,
    coord_param7 TEXT,
    coord_param6 TEXT,
    coord_extra1 TEXT,
    coord_extra2 TEXT,
    coord_extra3 TEXT,
    coord_extra4 TEXT,
    coord_extra5 TEXT,
    coord_extra6 TEXT,
    coord_extra7 TEXT,
    coord_text TEXT,
    value10 TEXT,
    text1 TEXT);
CREATE INDEX dsm_page ON dsm(type_id);
CREATE INDEX dsm_sensor ON dsm(type_id, sensor, date);
CREATE INDEX dsm_date ON dsm(type_id, date);
CREATE VIRTUAL TABLE dsm_bounds USING rtree(id, west, east, south, north);
CREATE TABLE dom (
    image_id INTEGER PRIMARY KEY CHECK (image_id BETWEEN 1 AND 4294967294),
    type_id INTEGER NOT NULL REFERENCES type(type_id),
    sensor TEXT,
    date TEXT,
    west REAL,
    south REAL,
    east REAL,
    north REAL,
    main_file_id INTEGER REFERENCES file(id),
    image_name TEXT,
    text2 TEXT,
    value1 TEXT,
    text3 TEXT,
    count1 TEXT,
    text4 TEXT,
    text5 TEXT,
    text6 TEXT,
    value3 TEXT,
    value4 TEXT,
    value5 TEXT,
    value6 TEXT,
    value7 TEXT,
    value8 TEXT,
    value9 TEXT,
    value10 TEXT,
    text7 TEXT,
    text11 TEXT,
    text8 TEXT,
    text13 TEXT,
    text14 TEXT,
    text9 TEXT,
    text12 TEXT,
    text10 TEXT,
    coord_param3 TEXT,
    datum TEXT,
    projection TEXT,
    coord_param5 TEXT,
    text15 TEXT,
    count3 TEXT,
    count4 TEXT,
    count2 TEXT,
    count5 TEXT,
    count6 TEXT,
    count7 TEXT,
    hemisphere TEXT,
    text18 TEXT,
    text16 TEXT,
    text17 TEXT,
    count8 TEXT,
    coord_param1 TEXT,
    coord_param2 TEXT,
    coord_param4 TEXT,
    coord_param7 TEXT,
    coord_param6 TEXT,
    coord_extra1 TEXT,
    coord_extra2 TEXT,
    coord_extra3 TEXT,
    coord_extra4 TEXT,
    coord_extra5 TEXT,
    coord_extra6 TEXT,
    coord_extra7 TEXT,
    coord_text TEXT,
    value2 TEXT,
    text1 TEXT);
CREATE INDEX dom_page ON dom(type_id);
CREATE INDEX dom_sensor ON dom(type_id, sensor, date);
CREATE INDEX dom_date ON dom(type_id, date);
CREATE VIRTUAL TABLE dom_bounds USING rtree(id, west, east, south, north);
CREATE TABLE dlg (
    image_id INTEGER PRIMARY KEY CHECK (image_id BETWEEN 1 AND 4294967294),
    type_id INTEGER NOT NULL REFERENCES type(type_id),
    sensor TEXT,
    date TEXT,
    west REAL,
    south REAL,
    east REAL,
    north REAL,
    main_file_id INTEGER REFERENCES file(id),
    image_name TEXT,
    text2 TEXT,
    value1 TEXT,
    text3 TEXT,
    count1 TEXT,
    text4 TEXT,
    text6 TEXT,
    text7 TEXT,
    value2 TEXT,
    value3 TEXT,
    value4 TEXT,
    value5 TEXT,
    value6 TEXT,
    value7 TEXT,
    value8 TEXT,
    value9 TEXT,
    text8 TEXT,
    text12 TEXT,
    text9 TEXT,
    text14 TEXT,
    text15 TEXT,
    text10 TEXT,
    text13 TEXT,
    text11 TEXT,
    coord_param3 TEXT,
    datum TEXT,
    projection TEXT,
    coord_param5 TEXT,
    text16 TEXT,
    count2 TEXT,
    count3 TEXT,
    count4 TEXT,
    count5 TEXT,
    count6 TEXT,
    hemisphere TEXT,
    text17 TEXT,
    count10 TEXT,
    coord_param1 TEXT,
    coord_param2 TEXT,
    coord_param4 TEXT,
    coord_param7 TEXT,
    coord_param6 TEXT,
    coord_extra1 TEXT,
    coord_extra2 TEXT,
    coord_extra3 TEXT,
    coord_extra4 TEXT,
    coord_extra5 TEXT,
    coord_extra6 TEXT,
    coord_extra7 TEXT,
    coord_text TEXT,
    text5 TEXT,
    count8 TEXT,
    count9 TEXT,
    count7 TEXT,
    value10 TEXT,
    text1 TEXT);
CREATE INDEX dlg_page ON dlg(type_id);
CREATE INDEX dlg_sensor ON dlg(type_id, sensor, date);
CREATE INDEX dlg_date ON dlg(type_id, date);
CREATE VIRTUAL TABLE dlg_bounds USING rtree(id, west, east, south, north);
CREATE TABLE image_mark (
    comm_id INTEGER NOT NULL,
    data_type_id INTEGER NOT NULL,
    record_id INTEGER NOT NULL,
    PRIMARY KEY (comm_id, data_type_id, record_id)) WITHOUT ROWID;
INSERT INTO company(id, companyno) VALUES (1, 'LUMO');
INSERT INTO company(id, companyno) VALUES (2, 'OTHER');
INSERT INTO user(id, username, company_id, token_hash, may_write) VALUES (1, 'demo', 1, X'8B2B74B269F222BD45280D242C5569059214253905B40E4B4B61DD4288624ED2', 1);
INSERT INTO user(id, username, company_id, token_hash, may_write) VALUES (2, 'guest', 2, X'0F4863B325A2BAC4919A6D65C9FE7CB61E088169C22F8F55451B6AE6D4BF30C9', 1);
INSERT INTO user(id, username, company_id, token_hash, may_write) VALUES (3, 'reader', 1, X'BD3A915F31BD88C4CA26F1DA62325CD1DDE3CAE1F3DFFDECC018917CF1497A3A', 0);
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
INSERT INTO project(project_id, project_name, company_id) VALUES (1, '华北', 1);
INSERT INTO type(type_id, project_id, data_type, type_text) VALUES (1, 1, '卫星影像', '第1版');
INSERT INTO type(type_id, project_id, data_type) VALUES (2, 1, '控制点属性');
INSERT INTO sat(image_id, type_id, sensor, date, west, south, east, north, main_file_id, image_name, value1, count1, datum, coord_extra7) VALUES (1, 1, 'PMS-1', '2026-01-31', 116.1, 39.2, 116.5, 39.6, 2, '景1', '2.5', '7', 'WGS84', '4');
INSERT INTO sat(image_id, type_id, west, south, east, north, image_name) VALUES (2, 1, 179.5, -17.0, 180.5, -16.0, '海');
INSERT INTO sat_bounds(id, west, east, south, north) VALUES (1, 1.16099998474121093752e+02, 116.5, 3.91999969482421874991e+01, 3.96000061035156249991e+01);
INSERT INTO sat_bounds(id, west, east, south, north) VALUES (2, 179.5, 180.5, -17.0, -16.0);
INSERT INTO control(dq_con_id, type_id, ctrl_file_name) VALUES (1, 2, 'points.txt');
INSERT INTO point(point_id, dq_con_id, con_number, point_x, point_y, point_z) VALUES (1, 1, 'K1', '1.5', '2.5', '3.5');
INSERT INTO image_mark(comm_id, data_type_id, record_id) VALUES (1, 6, 1);
INSERT INTO image_mark(comm_id, data_type_id, record_id) VALUES (4, 6, 1);
CREATE TABLE comment (
    id INTEGER PRIMARY KEY CHECK (id BETWEEN 1 AND 4294967294),
    company_id INTEGER NOT NULL REFERENCES company(id),
    commentcontent TEXT NOT NULL,
    commentstate TEXT NOT NULL,
    UNIQUE (company_id, commentcontent, commentstate));

CREATE TABLE image_comment (
    id INTEGER PRIMARY KEY CHECK (id BETWEEN 1 AND 4294967294),
    commentcontent TEXT NOT NULL,
    commentstate TEXT NOT NULL,
    UNIQUE (commentcontent, commentstate));

INSERT INTO image_comment SELECT DISTINCT comm_id, 'mark ' || comm_id, '' FROM image_mark;

DELETE FROM comment_record WHERE EXISTS (
    SELECT 1 FROM comment_record AS other WHERE other.data_type_id = comment_record.data_type_id
    AND other.record_id = comment_record.record_id AND other.comment_id < comment_record.comment_id);

CREATE UNIQUE INDEX comment_record_record ON comment_record(data_type_id, record_id);
CREATE INDEX data_folder_folder ON data_folder(src_id);
CREATE INDEX data_file_file ON data_file(file_id);
INSERT INTO comment(id, company_id, commentcontent, commentstate) VALUES (3, 1, '云', '');
INSERT INTO image_comment(id, commentcontent, commentstate) VALUES (5, '雪', 'new');
PRAGMA application_id = 1280658767;
PRAGMA user_version = 4;
COMMIT;
