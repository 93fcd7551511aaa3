"""probe_store.py URL: is our store there? 0: yes, 1: nothing is, 2: something else is."""
import http.client
import ssl
import sys
from urllib.parse import urlsplit

target = urlsplit(sys.argv[1])
context = ssl.create_default_context()
# The store signs its own certificate; who it is shows in its answer.
context.check_hostname = False
context.verify_mode = ssl.CERT_NONE
connection = http.client.HTTPSConnection(target.hostname or "", target.port, timeout=10, context=context)
try:
    connection.request("POST", "/qd_get_path.php", "")
    sys.exit(0 if b"<Path>" in connection.getresponse().read(4096) else 2)
except ConnectionRefusedError:
    sys.exit(1)
except (OSError, http.client.HTTPException):
    sys.exit(2)
