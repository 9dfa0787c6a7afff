#!/usr/bin/python3
"""Writes the encrypted test files whose parameters no writer picks on purpose:

  enc-r3-rc4-40.pdf     revision 3 with a 40-bit key (the owner road hashes 16 bytes 50 times)
  enc-r3-two-ids.pdf    revision 3 (RC4, 128 bits) whose two ID strings differ: the key uses
                        the first one
  enc-r6-loop-end.pdf   revision 6 whose user validation hash ends in the round where the
                        round count equals the last byte of E plus 32

User password "user", owner password "owner" in all three. The files are made once and
committed; the salts of the third were searched for and are fixed here. Check them with an
independent reader: qpdf --password=user --check FILE.
"""
import hashlib
import os
import struct
import sys

from cryptography.hazmat.primitives.ciphers import Cipher, algorithms, modes

PAD = bytes([0x28, 0xBF, 0x4E, 0x5E, 0x4E, 0x75, 0x8A, 0x41, 0x64, 0x00, 0x4E, 0x56, 0xFF, 0xFA,
             0x01, 0x08, 0x2E, 0x2E, 0x00, 0xB6, 0xD0, 0x68, 0x3E, 0x80, 0x2F, 0x0C, 0xA9, 0xFE,
             0x64, 0x53, 0x69, 0x7A])


def rc4(key, data):
    s = list(range(256))
    j = 0
    for i in range(256):
        j = (j + s[i] + key[i % len(key)]) & 255
        s[i], s[j] = s[j], s[i]
    out = bytearray()
    i = j = 0
    for b in data:
        i = (i + 1) & 255
        j = (j + s[i]) & 255
        s[i], s[j] = s[j], s[i]
        out.append(b ^ s[(s[i] + s[j]) & 255])
    return bytes(out)


def padded(pw):
    return (pw + PAD)[:32]


def owner_value(owner, user, rev, n):
    h = hashlib.md5(padded(owner)).digest()
    if rev >= 3:
        for _ in range(50):
            h = hashlib.md5(h).digest()
    key = h[:n]
    out = rc4(key, padded(user))
    if rev >= 3:
        for i in range(1, 20):
            out = rc4(bytes(b ^ i for b in key), out)
    return out


def file_key(user, o, p, doc_id, rev, n):
    h = hashlib.md5(padded(user) + o + struct.pack('<i', p) + doc_id).digest()
    if rev >= 3:
        for _ in range(50):
            h = hashlib.md5(h[:n]).digest()
    return h[:n]


def user_value(key, doc_id, rev):
    if rev == 2:
        return rc4(key, PAD)
    out = rc4(key, hashlib.md5(PAD + doc_id).digest())
    for i in range(1, 20):
        out = rc4(bytes(b ^ i for b in key), out)
    return out + bytes(16)


def aes_cbc(key, iv, data, decrypt=False):
    c = Cipher(algorithms.AES(key), modes.CBC(iv))
    x = c.decryptor() if decrypt else c.encryptor()
    return x.update(data) + x.finalize()


def hash_r6(pw, salt, udata=b''):
    """Algorithm 2.B; answers the hash and whether the loop ended where r == last byte + 32."""
    k = hashlib.sha256(pw + salt + udata).digest()
    r = 0
    while True:
        k1 = (pw + k + udata) * 64
        e = aes_cbc(k[:16], k[16:32], k1)
        sel = sum(e[:16]) % 3
        k = [hashlib.sha256, hashlib.sha384, hashlib.sha512][sel](e).digest()
        r += 1
        if r >= 64 and r >= e[-1] + 32:
            return k[:32], r == e[-1] + 32


def hexstr(b):
    return '<' + b.hex() + '>'


def write_pdf(path, encrypt, ids):
    objs = [
        b'<< /Type /Catalog /Pages 2 0 R >>',
        b'<< /Type /Pages /Kids [3 0 R] /Count 1 >>',
        b'<< /Type /Page /Parent 2 0 R /MediaBox [0 0 300 400] /Rotate 90 >>',
        encrypt.encode(),
    ]
    out = bytearray(b'%PDF-1.7\n')
    offsets = []
    for i, o in enumerate(objs, 1):
        offsets.append(len(out))
        out += b'%d 0 obj\n' % i + o + b'\nendobj\n'
    xref = len(out)
    out += b'xref\n0 %d\n0000000000 65535 f \n' % (len(objs) + 1)
    for off in offsets:
        out += b'%010d 00000 n \n' % off
    out += (b'trailer\n<< /Size %d /Root 1 0 R /Encrypt 4 0 R /ID [%s %s] >>\nstartxref\n%d\n%%%%EOF\n'
            % (len(objs) + 1, hexstr(ids[0]).encode(), hexstr(ids[1]).encode(), xref))
    open(path, 'wb').write(bytes(out))


def rc4_file(path, rev, n, ids, version):
    p = -3904
    o = owner_value(b'owner', b'user', rev, n)
    key = file_key(b'user', o, p, ids[0], rev, n)
    u = user_value(key, ids[0], rev)
    write_pdf(path, '<< /Filter /Standard /V %d /R %d /Length %d /P %d /O %s /U %s >>'
              % (version, rev, n * 8, p, hexstr(o), hexstr(u)), ids)


def r6_file(path):
    p = -3904
    fkey = bytes(range(32))
    # The validation salt is searched for: the first one whose hash loop ends at equality.
    for n in range(1, 100000):
        val_salt = struct.pack('>Q', n)
        h, equal = hash_r6(b'user', val_salt)
        if equal:
            break
    key_salt = b'keysalt!'
    u = h + val_salt + key_salt
    ue = aes_cbc(hash_r6(b'user', key_salt)[0], bytes(16), fkey)
    o_val, o_key = b'ownvalid', b'ownkeysa'
    o = hash_r6(b'owner', o_val, u)[0] + o_val + o_key
    oe = aes_cbc(hash_r6(b'owner', o_key, u)[0], bytes(16), fkey)
    perms = aes_cbc(fkey, bytes(16), struct.pack('<iI', p, 0xFFFFFFFF) + b'Tadb' + bytes(4))[:16]
    ids = (b'r6-loop-end-id-1', b'r6-loop-end-id-1')
    write_pdf(path, '<< /Filter /Standard /V 5 /R 6 /Length 256 /P %d /O %s /U %s /OE %s /UE %s '
              '/Perms %s /CF << /StdCF << /CFM /AESV3 /AuthEvent /DocOpen /Length 32 >> >> '
              '/StmF /StdCF /StrF /StdCF >>'
              % (p, hexstr(o), hexstr(u), hexstr(oe), hexstr(ue), hexstr(perms)), ids)
    return n


if __name__ == '__main__':
    out = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), '..')
    rc4_file(os.path.join(out, 'enc-r3-rc4-40.pdf'), 3, 5, (b'r3-forty-bit-id1', b'r3-forty-bit-id1'), 2)
    rc4_file(os.path.join(out, 'enc-r3-two-ids.pdf'), 3, 16, (b'first-id-string!', b'other-id-string!'), 2)
    print('validation salt', r6_file(os.path.join(out, 'enc-r6-loop-end.pdf')))
