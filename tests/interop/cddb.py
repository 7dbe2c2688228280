# SPDX-License-Identifier: GPL-3.0-or-later
"""Contract: other clients understand the tests' CD database. libcddb and Perl's CDDB_get calculate the identifiers of its
discs, find them, read their records and search them by text, at the protocol levels that they know.

Usage: cddb.py SERVER, the server being cddb_server. Exits with code 77 if a client is missing.
"""

import ctypes
import ctypes.util
import os
import shutil
import subprocess
import sys

try:
    LIBRARY = ctypes.CDLL("libcddb.so.2")
except OSError:
    print("libcddb is missing")
    sys.exit(77)
PERL = shutil.which("perl")
if PERL is None or subprocess.run([PERL, "-MCDDB_get", "-e", "1"], capture_output=True, check=False).returncode != 0:
    print("Perl's CDDB_get is missing")
    sys.exit(77)

# Discs of the server: the starts of the tracks and the end, in frames, and the texts of their records.
GAVIOTAS = (175, 18469, 34444, 51154, 70524, 88841, 104824, 124686, 140966, 159454, 177600)
HIVER = (150, 21834, 43363, 63436, 89772, 115596, 138570, 167224, 190210, 211499)
FIRST_TAKE = (150, 15000, 30100, 45225)
NOWHERE = (150, 1150, 9150)

failures = []
checks = 0


def same(got, expected, name):
    global checks
    checks += 1
    if got != expected:
        failures.append(name)
        print(f"FAIL {name}: {got!r}, expected {expected!r}")


class Server:
    def __init__(self, program, *options):
        self.process = subprocess.Popen([program, *options], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.host, self.port = self.process.stdout.readline().strip().rsplit(":", 1)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.asked = self.process.communicate(timeout=60)[0].splitlines()


def declare(name, result, *arguments):
    function = getattr(LIBRARY, name)
    function.restype = result
    function.argtypes = arguments
    return function


POINTER, TEXT, NUMBER = ctypes.c_void_p, ctypes.c_char_p, ctypes.c_int
new = declare("cddb_new", POINTER)
destroy = declare("cddb_destroy", None, POINTER)
cache_disable = declare("cddb_cache_disable", None, POINTER)
http_enable = declare("cddb_http_enable", None, POINTER)
set_server_name = declare("cddb_set_server_name", None, POINTER, TEXT)
set_server_port = declare("cddb_set_server_port", None, POINTER, NUMBER)
set_http_path_query = declare("cddb_set_http_path_query", NUMBER, POINTER, TEXT)
set_email_address = declare("cddb_set_email_address", NUMBER, POINTER, TEXT)
set_client = declare("cddb_set_client", None, POINTER, TEXT, TEXT)
set_charset = declare("cddb_set_charset", NUMBER, POINTER, TEXT)
query = declare("cddb_query", NUMBER, POINTER, POINTER)
query_next = declare("cddb_query_next", NUMBER, POINTER, POINTER)
read = declare("cddb_read", NUMBER, POINTER, POINTER)
album = declare("cddb_album", NUMBER, POINTER, POINTER)
disc_new = declare("cddb_disc_new", POINTER)
disc_destroy = declare("cddb_disc_destroy", None, POINTER)
disc_set_length = declare("cddb_disc_set_length", None, POINTER, ctypes.c_uint)
disc_add_track = declare("cddb_disc_add_track", None, POINTER, POINTER)
disc_calc_discid = declare("cddb_disc_calc_discid", NUMBER, POINTER)
disc_get_discid = declare("cddb_disc_get_discid", ctypes.c_uint, POINTER)
disc_get_category = declare("cddb_disc_get_category_str", TEXT, POINTER)
disc_get_artist = declare("cddb_disc_get_artist", TEXT, POINTER)
disc_get_title = declare("cddb_disc_get_title", TEXT, POINTER)
disc_set_artist = declare("cddb_disc_set_artist", None, POINTER, TEXT)
disc_set_title = declare("cddb_disc_set_title", None, POINTER, TEXT)
disc_get_genre = declare("cddb_disc_get_genre", TEXT, POINTER)
disc_get_year = declare("cddb_disc_get_year", ctypes.c_uint, POINTER)
disc_get_track_count = declare("cddb_disc_get_track_count", NUMBER, POINTER)
disc_get_track = declare("cddb_disc_get_track", POINTER, POINTER, NUMBER)
track_new = declare("cddb_track_new", POINTER)
track_set_frame_offset = declare("cddb_track_set_frame_offset", None, POINTER, NUMBER)
track_get_title = declare("cddb_track_get_title", TEXT, POINTER)


class Client:
    """A connection of libcddb with one disc."""

    def __init__(self, server, marks=()):
        self.connection, self.disc = new(), disc_new()
        cache_disable(self.connection)
        http_enable(self.connection)
        set_server_name(self.connection, server.host.encode())
        set_server_port(self.connection, int(server.port))
        set_http_path_query(self.connection, b"/~cddb/cddb.cgi")
        set_email_address(self.connection, b"ana@mail.example")
        set_client(self.connection, b"interop", b"1.0")
        set_charset(self.connection, b"UTF-8")
        for start in marks[:-1]:
            track = track_new()
            track_set_frame_offset(track, start)
            disc_add_track(self.disc, track)
        if marks:
            disc_set_length(self.disc, marks[-1] // 75)
            disc_calc_discid(self.disc)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        disc_destroy(self.disc)
        destroy(self.connection)

    def titles(self):
        return [track_get_title(disc_get_track(self.disc, index)).decode()
                for index in range(disc_get_track_count(self.disc))]

    def names(self):
        return disc_get_artist(self.disc).decode(), disc_get_title(self.disc).decode()


def libcddb(server):
    with Client(server, GAVIOTAS) as client:
        same(f"{disc_get_discid(client.disc):08x}", "92093e0a", "libcddb: identifier of ten tracks")
        same(query(client.connection, client.disc), 1, "libcddb: one exact match")
        same(disc_get_category(client.disc), b"rock", "libcddb: category")
        same(client.names(), ("Las Gaviotas", "Mareas Lentas"), "libcddb: names of the match")
        same(read(client.connection, client.disc), 1, "libcddb: read")
        same((disc_get_year(client.disc), disc_get_genre(client.disc)), (1998, b"Rock"), "libcddb: year, genre")
        titles = client.titles()
        same(len(titles), 10, "libcddb: tracks")
        same(titles[2], "La Niña del Faro", "libcddb: a title")
        same(titles[6], "Canción de los que se fueron y no volvieron nunca más a la orilla de aquella playa larga y "
             "blanca del norte", "libcddb: a title in several lines")
    with Client(server, HIVER) as client:
        same(f"{disc_get_discid(client.disc):08x}", "820b0109", "libcddb: identifier of nine tracks")
        same(query(client.connection, client.disc), 1, "libcddb: the other disc")
        same(client.names(), ("Marie L'Été", "Côte d'Hiver"), "libcddb: accents")
    with Client(server, FIRST_TAKE) as client:
        same(query(client.connection, client.disc) >= 1, True, "libcddb: several matches")
        first = client.names()
        same(query_next(client.connection, client.disc), 1, "libcddb: the next match")
        same((first, client.names()), (("The Quiet Three", "First Take"), ("The Quiet Three", "First Take (reissue)")),
             "libcddb: names of several matches")
    with Client(server, NOWHERE) as client:
        same(query(client.connection, client.disc), 0, "libcddb: no match")
    with Client(server) as client:
        disc_set_artist(client.disc, b"Las Gaviotas")
        disc_set_title(client.disc, b"Mareas")
        same(album(client.connection, client.disc), 1, "libcddb: the album command")
        same(client.names(), ("Las Gaviotas", "Mareas Lentas"), "libcddb: the album found")


PERL_PROGRAM = r"""
use CDDB_get qw(get_cddb);
my ($address, $level, $id, @marks) = @ARGV;
my @toc = map { { frames => $_ } } @marks;
my %config = (CDDB_HOST => "db.invalid", CDDB_MODE => "http", PROTO_VERSION => $level, HTTP_PROXY => $address,
              HELLO_ID => "ana mail.example interop 1.0", input => 0);
my %cd = get_cddb(\%config, [hex $id, $#marks, \@toc]);
exit 3 unless defined $cd{title};
print join("\n", $cd{cat}, $cd{artist}, $cd{title}, $cd{year} // "", @{$cd{track}}), "\n";
"""


def perl(server, level, marks, identifier):
    """What CDDB_get finds. It reaches another port only through a proxy, so the server is its proxy."""
    address = f"http://{server.host}:{server.port}"
    result = subprocess.run([PERL, "-e", PERL_PROGRAM, address, str(level), identifier, *map(str, marks)], check=False,
                            capture_output=True, timeout=60)
    if result.returncode != 0:
        return result.returncode, result.stderr.decode(errors="replace")
    return result.stdout.decode("utf-8" if level > 5 else "latin-1").splitlines()


def cddb_get(server):
    for level in (1, 5, 6):
        found = perl(server, level, GAVIOTAS, "92093e0a")
        same(found[:3], ["rock", "Las Gaviotas", "Mareas Lentas"], f"CDDB_get: the disc at level {level}")
        same(found[6:7], ["La Niña del Faro"], f"CDDB_get: a title at level {level}")
        same(len(found), 14, f"CDDB_get: tracks at level {level}")
    same(perl(server, 6, NOWHERE, "0a006a02")[0], 3, "CDDB_get: no match")


def main():
    for name in [*os.environ]:
        if name.lower().endswith("_proxy"):
            del os.environ[name]
    with Server(sys.argv[1]) as server:
        libcddb(server)
        cddb_get(server)
    same([sum(words in address for address in server.asked) for words in ("hello=ana+mail.example+interop+1.0&", "proto=1",
                                                                          "cddb+album+Las+Gaviotas+/+Mareas")],
         [13, 2, 1], "what the server was asked")
    with Server(sys.argv[1], "--fault", "Code403", "--only", "cddb read") as server, Client(server, GAVIOTAS) as client:
        same((query(client.connection, client.disc), read(client.connection, client.disc)), (1, 0),
             "libcddb: a damaged entry")
    print(f"{checks} checks, {len(failures)} failures")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
