# shellcheck shell=bash disable=SC2034
# The source packages we build: name, Debian version and the suite that carries it.
# README.md in this folder says how to raise one.
OPENSSL_VERSION=3.0.20-1~deb12u2
OPENSSL_SUITE=bookworm
CURL_VERSION=8.14.1-2+deb13u5
CURL_SUITE=trixie
PUGIXML_VERSION=1.13-0.2
PUGIXML_SUITE=bookworm
