"""The form of the metadata, and the way to it from older forms."""
from __future__ import annotations

VERSION = 2

# Dates are seconds since 1970-01-01 UTC, 0 for none. An item's owner is the account whose
# space it fills; parent_id 0 is the owner's root. Account ids start above 1000 and travel
# as 32-bit numbers. link_key of a transfer account signs its direct links.
_TABLES = """
CREATE TABLE users (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    name TEXT NOT NULL, name_key TEXT NOT NULL UNIQUE, password TEXT NOT NULL,
    email TEXT NOT NULL, email_key TEXT NOT NULL,
    first_name TEXT NOT NULL DEFAULT '', last_name TEXT NOT NULL DEFAULT '',
    lang TEXT NOT NULL DEFAULT 'en', level TEXT NOT NULL DEFAULT '1',
    quota INTEGER NOT NULL, used INTEGER NOT NULL DEFAULT 0, created INTEGER NOT NULL,
    upload_limit INTEGER, download_limit INTEGER, email_proven INTEGER NOT NULL DEFAULT 0,
    demo INTEGER NOT NULL DEFAULT 0, items INTEGER NOT NULL DEFAULT 0);
CREATE UNIQUE INDEX users_email ON users(email_key) WHERE email_key <> '';
INSERT INTO sqlite_sequence(name, seq) VALUES ('users', 1000);

CREATE TABLE accesses (
    id INTEGER PRIMARY KEY, name TEXT NOT NULL, name_key TEXT NOT NULL UNIQUE,
    password TEXT, dir_id INTEGER NOT NULL REFERENCES items(id) ON DELETE CASCADE,
    owner_id INTEGER NOT NULL REFERENCES users(id), mode INTEGER NOT NULL,
    created INTEGER NOT NULL, demo INTEGER NOT NULL DEFAULT 0);
CREATE TABLE transfer_accounts (
    id INTEGER PRIMARY KEY, login TEXT NOT NULL UNIQUE, password TEXT NOT NULL,
    link_key TEXT NOT NULL UNIQUE,
    user_id INTEGER UNIQUE REFERENCES users(id),
    access_id INTEGER UNIQUE REFERENCES accesses(id) ON DELETE CASCADE);
CREATE TABLE sessions (
    token TEXT PRIMARY KEY,
    account_id INTEGER NOT NULL REFERENCES transfer_accounts(id) ON DELETE CASCADE,
    pc_id TEXT NOT NULL, version TEXT NOT NULL,
    created INTEGER NOT NULL, seen INTEGER NOT NULL);

CREATE TABLE contents (
    id INTEGER PRIMARY KEY AUTOINCREMENT, location TEXT NOT NULL UNIQUE,
    size INTEGER NOT NULL, created INTEGER NOT NULL);
CREATE TABLE items (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    owner_id INTEGER NOT NULL REFERENCES users(id), parent_id INTEGER NOT NULL,
    kind INTEGER NOT NULL, name TEXT NOT NULL, name_key TEXT NOT NULL,
    description TEXT NOT NULL DEFAULT '', access INTEGER NOT NULL DEFAULT 0,
    price REAL NOT NULL DEFAULT 0, size INTEGER NOT NULL DEFAULT 0,
    content_id INTEGER REFERENCES contents(id), media INTEGER NOT NULL DEFAULT 0,
    home INTEGER NOT NULL DEFAULT 0, link_key TEXT NOT NULL,
    created INTEGER NOT NULL, modified INTEGER NOT NULL, accessed INTEGER NOT NULL DEFAULT 0,
    trashed INTEGER NOT NULL DEFAULT 0);
CREATE UNIQUE INDEX items_name ON items(owner_id, parent_id, name_key) WHERE trashed = 0;
CREATE INDEX items_listing ON items(owner_id, parent_id, kind, name_key) WHERE trashed = 0;
CREATE INDEX items_media ON items(parent_id, media) WHERE trashed = 0 AND media > 0;
CREATE INDEX items_parent ON items(parent_id);
CREATE INDEX items_trash ON items(owner_id) WHERE trashed > 0;
CREATE INDEX items_content ON items(content_id);
CREATE UNIQUE INDEX items_link ON items(link_key);

CREATE TABLE uploads (
    location TEXT PRIMARY KEY, item_id INTEGER NOT NULL REFERENCES items(id) ON DELETE CASCADE,
    account_id INTEGER NOT NULL REFERENCES transfer_accounts(id) ON DELETE CASCADE,
    max_bytes INTEGER NOT NULL, opened INTEGER NOT NULL, closed_size INTEGER);
CREATE TABLE downloads (
    account_id INTEGER NOT NULL REFERENCES transfer_accounts(id) ON DELETE CASCADE,
    item_id INTEGER NOT NULL, content_id INTEGER NOT NULL REFERENCES contents(id),
    opened INTEGER NOT NULL);
CREATE INDEX downloads_item ON downloads(account_id, item_id);
CREATE INDEX downloads_content ON downloads(content_id);
CREATE TABLE superseded (
    content_id INTEGER NOT NULL REFERENCES contents(id), item_id INTEGER NOT NULL,
    at INTEGER NOT NULL, owner_id INTEGER NOT NULL DEFAULT 0);
CREATE INDEX superseded_content ON superseded(content_id);
CREATE TABLE shares (
    id INTEGER PRIMARY KEY AUTOINCREMENT,
    dir_id INTEGER NOT NULL REFERENCES items(id) ON DELETE CASCADE,
    owner_id INTEGER NOT NULL REFERENCES users(id),
    with_id INTEGER NOT NULL REFERENCES users(id),
    mode INTEGER NOT NULL, created INTEGER NOT NULL, UNIQUE (dir_id, with_id));
CREATE INDEX shares_with ON shares(with_id, owner_id);
CREATE TABLE notifications (
    id INTEGER PRIMARY KEY, user_id INTEGER NOT NULL REFERENCES users(id),
    title TEXT NOT NULL, text TEXT NOT NULL, url TEXT NOT NULL, created INTEGER NOT NULL);
CREATE TABLE settings (
    user_id INTEGER NOT NULL REFERENCES users(id), name TEXT NOT NULL,
    value TEXT NOT NULL, type INTEGER NOT NULL, PRIMARY KEY (user_id, name));
"""

# An invitation waits for who proves the address by the code of its letter, kept as a digest.
_INVITATIONS = """
CREATE TABLE invitations (
    id INTEGER PRIMARY KEY, dir_id INTEGER NOT NULL REFERENCES items(id) ON DELETE CASCADE,
    owner_id INTEGER NOT NULL REFERENCES users(id), email TEXT NOT NULL, email_key TEXT NOT NULL,
    code TEXT NOT NULL UNIQUE, created INTEGER NOT NULL, UNIQUE (dir_id, email_key));
CREATE INDEX invitations_owner ON invitations(owner_id);
"""

# users.used is the sum of the sizes of all items of the account, users.items their count.
# A content that a file had stays for a while: a reader may be about to open it.
_TRIGGERS = """
CREATE TRIGGER items_added AFTER INSERT ON items BEGIN
    UPDATE users SET used = used + new.size, items = items + 1 WHERE id = new.owner_id; END;
CREATE TRIGGER items_removed AFTER DELETE ON items BEGIN
    UPDATE users SET used = used - old.size, items = items - 1 WHERE id = old.owner_id; END;
CREATE TRIGGER items_changed AFTER UPDATE OF size, owner_id ON items BEGIN
    UPDATE users SET used = used - old.size, items = items - 1 WHERE id = old.owner_id;
    UPDATE users SET used = used + new.size, items = items + 1 WHERE id = new.owner_id; END;
CREATE TRIGGER content_replaced AFTER UPDATE OF content_id ON items
    WHEN old.content_id IS NOT NULL AND old.content_id IS NOT new.content_id BEGIN
    INSERT INTO superseded VALUES (old.content_id, old.id, strftime('%s', 'now'), old.owner_id); END;
CREATE TRIGGER content_dropped AFTER DELETE ON items WHEN old.content_id IS NOT NULL BEGIN
    INSERT INTO superseded VALUES (old.content_id, old.id, strftime('%s', 'now'), old.owner_id); END;
"""

_INDEXES = """
CREATE INDEX uploads_item ON uploads(item_id);
CREATE INDEX uploads_open ON uploads(item_id) WHERE closed_size IS NULL;
CREATE INDEX sessions_account ON sessions(account_id);
"""

SCHEMA = _TABLES + _INVITATIONS + _TRIGGERS + _INDEXES

UPGRADES = (
    # From 1 to 2. Letters of that time had no code that could be answered with, and its links
    # opened all of an account.
    """
ALTER TABLE users ADD COLUMN email_proven INTEGER NOT NULL DEFAULT 0;
ALTER TABLE users ADD COLUMN demo INTEGER NOT NULL DEFAULT 0;
ALTER TABLE users ADD COLUMN items INTEGER NOT NULL DEFAULT 0;
ALTER TABLE accesses ADD COLUMN demo INTEGER NOT NULL DEFAULT 0;
ALTER TABLE superseded ADD COLUMN owner_id INTEGER NOT NULL DEFAULT 0;
UPDATE users SET items = (SELECT count(*) FROM items WHERE owner_id = users.id);
UPDATE users SET demo = 1, email_proven = 1
    WHERE name_key IN ('demo', 'anna') AND email_key = name_key || '@quilldeck.example';
UPDATE accesses SET demo = 1
    WHERE name_key IN ('visitor', 'helper') AND owner_id IN (SELECT id FROM users WHERE demo = 1);
UPDATE transfer_accounts SET link_key = lower(hex(randomblob(16)));
DROP TRIGGER items_added; DROP TRIGGER items_removed; DROP TRIGGER items_changed;
DROP TRIGGER content_replaced; DROP TRIGGER content_dropped;
DROP TABLE invitations;
""" + _INVITATIONS + _TRIGGERS + _INDEXES,
)
"""What leads from each form to the next, from 1 on."""
