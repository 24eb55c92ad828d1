"""What client.py and box.py have in common: chunks, digests, names, files that appear whole, and the stall limit.
docs/bulkhaul.md describes the protocol. The messages are made from the .proto files once, in this folder:

    protoc -I ../../src/components/bulkhaul -I ../../src/components/hubline -I ../../src/components/services \
        --python_out=. haulbox.proto hubline.proto kestaserver.proto

Debian's packages: protobuf-compiler python3-grpcio python3-protobuf python3-xxhash."""

import contextlib
import fcntl
import os
import stat
import threading

import haulbox_pb2 as messages
import hubline_pb2
import xxhash

CHUNK = 1 << 20
MOST_CHUNKS = 1024  # in one stream
MOST_DIGESTS = 64  # that a client asks for at once
MOST_FILES = 64  # in a batch
MOST_DATA = 8 << 20  # bytes in a batch
MOST_FOLDERS = 256
MESSAGE_LIMIT = 96 << 20  # bytes, of an answer
OPTIONS = [("grpc.max_receive_message_length", MESSAGE_LIMIT), ("grpc.max_send_message_length", MESSAGE_LIMIT)]
SUFFIX = ".lumo-part"

# Operation: the types of request and answer, and which of them is a stream.
OPERATIONS = {
    "open": (messages.OpenReq, messages.OpenRsp, "unary_unary"),
    "list": (messages.ListReq, messages.ListRsp, "unary_unary"),
    "fetch": (messages.FetchReq, messages.FetchRsp, "unary_unary"),
    "digests": (messages.DigestsReq, messages.DigestsRsp, "unary_unary"),
    "read": (messages.RunReq, messages.Chunk, "unary_stream"),
    "begin": (messages.BeginReq, messages.BeginRsp, "unary_unary"),
    "write": (messages.Chunk, messages.WriteRsp, "stream_unary"),
    "finish": (messages.FinishReq, messages.FinishRsp, "unary_unary"),
    "store": (messages.StoreReq, messages.StoreRsp, "unary_unary"),
}
BOX = "haulbox.BoxServices"
HUB = "hubline.HubServices"
HELLO = (hubline_pb2.HelloReq, hubline_pb2.HelloRsp)


class Failure(Exception):
    """What ends a transfer: a status of haulbox.proto and words."""

    def __init__(self, status, reason):
        super().__init__(f"{messages.Status.Name(status)}: {reason}")
        self.status = status
        self.reason = reason


def digest(data):
    return xxhash.xxh3_128_digest(data)


def chunks_of(size):
    return -(-size // CHUNK)


def chunk_length(size, index):
    return min(CHUNK, size - index * CHUNK)


def runs(chunks):
    """Joins ascending chunk numbers to runs (first, count) that fit into a stream."""
    found = []
    for chunk in chunks:
        if found and chunk == sum(found[-1]) and found[-1][1] < MOST_CHUNKS:
            found[-1] = (found[-1][0], found[-1][1] + 1)
        else:
            found.append((chunk, 1))
    return found


def is_partial(name):
    return name.startswith(".") and name.endswith(SUFFIX)


def partial_name(name):
    partial = f".{name}{SUFFIX}"
    return partial if len(os.fsencode(partial)) <= 255 else f".{digest(os.fsencode(name)).hex()}{SUFFIX}"


def components(below):
    """The names of a path from the other side, all of which are safe to use here."""
    names = below.split("/")
    for name in names:
        if name in ("", ".", "..") or "\0" in name or is_partial(name):
            raise Failure(messages.UNSAFE_NAME, repr(below))
    if len(names) > MOST_FOLDERS or len(below.encode()) > 4095:
        raise Failure(messages.UNSAFE_NAME, "the path is too long")
    return names


@contextlib.contextmanager
def parent_of(root, below, make=False):
    """Opens the folder of `below`, a path below `root`, step by step and through no link. Gives its descriptor and
    the last name of the path."""
    *folders, name = components(below)
    folder = os.open(root, os.O_RDONLY | os.O_DIRECTORY)
    try:
        for step in folders:
            if make:
                with contextlib.suppress(FileExistsError):
                    os.mkdir(step, dir_fd=folder)
            following = os.open(step, os.O_RDONLY | os.O_DIRECTORY | os.O_NOFOLLOW, dir_fd=folder)
            os.close(folder)
            folder = following
        yield folder, name
    finally:
        os.close(folder)


def kind_of(root, below):
    """The stat result of a file or folder, not of what a link refers to; None if there is none."""
    try:
        with parent_of(root, below) as (folder, name):
            return os.stat(name, dir_fd=folder, follow_symlinks=False)
    except FileNotFoundError:
        return None


def version_of(info):
    return f"{info.st_ino}-{info.st_size}-{info.st_mtime_ns}-{info.st_ctime_ns}"


class Source:
    """A file to read, which has to stay as it is."""

    def __init__(self, root, below, follow=False):
        with parent_of(root, below) as (folder, name):
            self.file = os.open(name, os.O_RDONLY | os.O_NONBLOCK | (0 if follow else os.O_NOFOLLOW), dir_fd=folder)
        info = os.fstat(self.file)
        self.size = info.st_size
        if not stat.S_ISREG(info.st_mode):
            self.close()
            raise Failure(messages.WRONG_KIND, f"{below} is not a file")
        self.version = version_of(info)

    def chunk(self, index, length=CHUNK):
        data = os.pread(self.file, length, index * CHUNK)
        if version_of(os.fstat(self.file)) != self.version:
            raise Failure(messages.CHANGED, "the file changed while it was read")
        return data

    def whole_digest(self):
        return digest(b"".join(digest(self.chunk(index)) for index in range(chunks_of(self.size))))

    def close(self):
        os.close(self.file)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()


class Partial:
    """A file on its way: the partial file beside the target, which becomes the target when it is complete."""

    def __init__(self, root, below, make=False):
        with parent_of(root, below, make) as (folder, self.name):
            self.folder = os.dup(folder)
        self.partial = partial_name(self.name)
        flags = os.O_RDWR | os.O_CREAT | os.O_NOFOLLOW
        try:
            self.file = os.open(self.partial, flags, 0o666, dir_fd=self.folder)
        except OSError:
            os.close(self.folder)
            raise
        try:
            fcntl.flock(self.file, fcntl.LOCK_EX | fcntl.LOCK_NB)
        except BlockingIOError:
            self.close()
            raise Failure(messages.BUSY, f"another transfer writes to {below}") from None

    def size(self):
        return os.fstat(self.file).st_size

    def chunk(self, index, length=CHUNK):
        return os.pread(self.file, length, index * CHUNK)

    def write(self, index, data):
        done = 0
        while done < len(data):
            done += os.pwrite(self.file, data[done:], index * CHUNK + done)

    def truncate(self, size):
        os.ftruncate(self.file, size)

    def complete(self, size, keep):
        """Gives the file its name. Returns False if a file of that name was kept instead."""
        self.truncate(size)
        os.fsync(self.file)
        kept = False
        if keep:
            try:  # link(2) does not replace, rename(2) does
                os.link(self.partial, self.name, src_dir_fd=self.folder, dst_dir_fd=self.folder)
            except FileExistsError:
                if stat.S_ISDIR(os.stat(self.name, dir_fd=self.folder, follow_symlinks=False).st_mode):
                    raise Failure(messages.WRONG_KIND, f"{self.name} is a folder") from None
                kept = True
            os.unlink(self.partial, dir_fd=self.folder)
        else:
            os.rename(self.partial, self.name, src_dir_fd=self.folder, dst_dir_fd=self.folder)
        os.fsync(self.folder)
        return not kept

    def remove(self):
        os.unlink(self.partial, dir_fd=self.folder)

    def close(self):
        os.close(self.file)
        os.close(self.folder)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.close()


def put_whole(root, below, data, keep, make=False):
    """Writes a small file. Returns False if a file of that name was kept instead."""
    with Partial(root, below, make) as target:
        target.truncate(0)
        target.write(0, data)
        return target.complete(len(data), keep)


class Watchdog:
    """Calls `stop` when nothing has moved for `limit` seconds."""

    def __init__(self, limit, stop):
        self.limit = limit
        self.stop = stop
        self.timer = None
        self.moved()

    def moved(self):
        self.end()
        self.timer = threading.Timer(self.limit, self.stop)
        self.timer.daemon = True
        self.timer.start()

    def end(self):
        if self.timer:
            self.timer.cancel()
