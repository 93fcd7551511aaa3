"""The self-signed certificate that the store makes for itself."""
from __future__ import annotations

import datetime
import ipaddress
import os
from pathlib import Path

from cryptography import x509
from cryptography.hazmat.primitives import hashes, serialization
from cryptography.hazmat.primitives.asymmetric import ec
from cryptography.x509.oid import NameOID

from .contents import sync_file

DAYS = 3650


def ensure(file: Path, host: str) -> Path:
    """Makes key and certificate in one file, unless the file is there (a host may put a
    certificate of its own in its place)."""
    if file.exists():
        return file
    key = ec.generate_private_key(ec.SECP256R1())
    name = x509.Name([x509.NameAttribute(NameOID.COMMON_NAME, host),
                      x509.NameAttribute(NameOID.ORGANIZATION_NAME, "Quilldeck store")])
    start = datetime.datetime.utcnow() - datetime.timedelta(days=1)
    names: list[x509.GeneralName] = [x509.DNSName("localhost")]
    names += [x509.IPAddress(ipaddress.ip_address(text)) for text in ("127.0.0.1", "::1")]
    if host != "localhost":
        try:
            names.append(x509.IPAddress(ipaddress.ip_address(host)))
        except ValueError:
            names.append(x509.DNSName(host))
    certificate = (
        x509.CertificateBuilder().subject_name(name).issuer_name(name).public_key(key.public_key())
        .serial_number(x509.random_serial_number()).not_valid_before(start)
        .not_valid_after(start + datetime.timedelta(days=DAYS))
        .add_extension(x509.SubjectAlternativeName(names), critical=False)
        .add_extension(x509.BasicConstraints(ca=True, path_length=0), critical=True)
        .sign(key, hashes.SHA256()))
    part = file.with_suffix(".part")
    with os.fdopen(os.open(part, os.O_WRONLY | os.O_CREAT | os.O_TRUNC, 0o600), "wb") as out:
        out.write(key.private_bytes(serialization.Encoding.PEM,
                                    serialization.PrivateFormat.PKCS8,
                                    serialization.NoEncryption()))
        out.write(certificate.public_bytes(serialization.Encoding.PEM))
    sync_file(part)
    os.replace(part, file)
    return file
