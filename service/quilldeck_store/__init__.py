"""Quilldeck's local store: metadata over HTTPS, bytes over FTP with TLS."""
