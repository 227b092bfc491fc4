-- Runs if the tables are missing. The mailer reads link_requests, sends links for a new password, and deletes the rows.
CREATE TABLE IF NOT EXISTS customers (id INTEGER PRIMARY KEY, mailbox INTEGER NOT NULL UNIQUE, nombre TEXT NOT NULL,
    email TEXT NOT NULL, email_key TEXT NOT NULL UNIQUE, password_hash TEXT NOT NULL, direccion TEXT, ciudad TEXT);
CREATE TABLE IF NOT EXISTS photos (customer_id INTEGER PRIMARY KEY REFERENCES customers, photo BLOB NOT NULL);
CREATE TABLE IF NOT EXISTS packages (id INTEGER PRIMARY KEY, customer_id INTEGER NOT NULL REFERENCES customers,
    tracking TEXT NOT NULL UNIQUE, descripcion TEXT NOT NULL, estado TEXT NOT NULL, fecha_recibido TEXT NOT NULL);
CREATE TABLE IF NOT EXISTS quotations (id INTEGER PRIMARY KEY, customer_id INTEGER NOT NULL REFERENCES customers,
    tipo TEXT, origen TEXT, destino TEXT, peso REAL, valor REAL, descripcion TEXT, estado TEXT, created_at INTEGER);
CREATE TABLE IF NOT EXISTS vehicles (id INTEGER PRIMARY KEY, customer_id INTEGER NOT NULL REFERENCES customers,
    marca TEXT, modelo TEXT, anio TEXT, ubicacion TEXT, created_at INTEGER);
CREATE INDEX IF NOT EXISTS packages_customer ON packages (customer_id);
CREATE INDEX IF NOT EXISTS quotations_customer ON quotations (customer_id);
CREATE TABLE IF NOT EXISTS link_requests (customer_id INTEGER PRIMARY KEY REFERENCES customers, created_at INTEGER);
CREATE TABLE IF NOT EXISTS login_attempts (email_key TEXT NOT NULL, at INTEGER NOT NULL);
PRAGMA user_version = 1;
