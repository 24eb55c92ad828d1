#!/usr/bin/python3
"""A storage box that serves one folder:

    box.py ROOT --listen 127.0.0.1:PORT --token-file FILE

It prints its address; port 0 is a free one. Everyone with the token may read and write all of ROOT, whatever the
application's message says, and there is no catalogue to register files in. `lumo-centre add-box DATA CODE ADDRESS`
and `import DATA ROOT --disk NAME --box CODE` make a disk of it that `lumo` uses. haul.py says what is needed to run
this; docs/bulkhaul.md describes the protocol."""

import argparse
import contextlib
import errno
import functools
import os
import secrets
import signal
import stat
import threading
import time
from concurrent import futures

import grpc
import hubline_pb2
from haul import (BOX, CHUNK, HELLO, HUB, MOST_CHUNKS, MOST_FOLDERS, OPERATIONS, OPTIONS, Failure, Partial, Source,
                  Watchdog, chunk_length, chunks_of, components, digest, is_partial, kind_of, messages, parent_of,
                  put_whole, version_of)

PAGE = 1000  # entries; 20000 are allowed
IDLE_LIMIT = 600  # seconds, for handles and streams
MOST_TRANSFERS = 1024
MOST_UPLOADS = 64
BUSY_AFTER = 1  # seconds

STATUS_OF = {
    errno.ENOENT: messages.NOT_FOUND, errno.ENOTDIR: messages.WRONG_KIND, errno.EISDIR: messages.WRONG_KIND,
    errno.ELOOP: messages.WRONG_KIND, errno.ENAMETOOLONG: messages.UNSAFE_NAME, errno.ENOSPC: messages.NO_SPACE,
    errno.EDQUOT: messages.NO_SPACE, errno.EFBIG: messages.NO_SPACE,
}


def is_utf8(name):
    try:
        return bool(name.encode())
    except UnicodeEncodeError:
        return False


def idle_since(used):
    return time.monotonic() - used > IDLE_LIMIT


class Handles:
    """What clients have begun, by handle: the least recently used ends when there are too many or it is idle."""

    def __init__(self, most):
        self.most = most
        self.known = {}  # the least recently used first
        self.lock = threading.RLock()

    def add(self, value):
        with self.lock:
            for handle in [handle for handle, (_, used) in self.known.items() if idle_since(used)]:
                self.end(handle)
            if len(self.known) == self.most:
                self.end(next(iter(self.known)))
            handle = secrets.token_bytes(16)
            self.known[handle] = (value, time.monotonic())
            return handle

    def get(self, handle):
        """Returns what the handle is for, which is not idle then."""
        with self.lock:
            value, used = self.known.pop(handle, (None, 0))
            if value is None or idle_since(used):
                raise Failure(messages.ENDED, "the box does not know this handle any more")
            self.known[handle] = (value, time.monotonic())
            return value

    def touch(self, handle):
        """Says that what the handle is for is in use, if it has not ended."""
        with contextlib.suppress(Failure):
            self.get(handle)

    def find(self, condition):
        with self.lock:
            return next(((handle, value) for handle, (value, _) in self.known.items() if condition(value)),
                        (None, None))

    def end(self, handle):
        with self.lock:
            value, _ = self.known.pop(handle, (None, 0))
        if value is not None:
            value.end()


class Transfer:
    """A file or folder that a client may read or write: its path below the root."""

    def __init__(self, path, writing):
        self.path = path
        self.writing = writing

    def below(self, request):
        return f"{self.path}/{request.below}" if request.below else self.path

    def end(self):
        pass


class Upload:
    """One large file on its way into the box."""

    def __init__(self, root, path, size, keep, transfer):
        self.path = path
        self.transfer = transfer
        self.size = size
        self.keep = keep
        old = kind_of(root, path)
        if old and stat.S_ISDIR(old.st_mode):
            raise Failure(messages.WRONG_KIND, f"{path} is a folder")
        self.target = Partial(root, path, make=True)
        self.old = None
        if not self.target.size() and old and stat.S_ISREG(old.st_mode) and old.st_size == size:
            self.old = Source(root, path)
        self.target.truncate(min(size, self.target.size()))
        self.found = size if self.old else self.target.size()
        self.digests = {}  # of the chunks that are there
        self.arrived = 0
        self.calls = 0
        self.used = time.monotonic()
        self.ended = False
        self.lock = threading.RLock()

    def __enter__(self):
        with self.lock:
            if self.ended:
                raise Failure(messages.ENDED, "the upload has ended")
            self.calls += 1

    def __exit__(self, *_):
        with self.lock:
            self.calls -= 1
            self.used = time.monotonic()
            if self.ended and not self.calls:
                self.close()

    def busy(self):
        with self.lock:
            return not self.ended and (self.calls > 0 or time.monotonic() - self.used < BUSY_AFTER)

    def chunk_digests(self, first, count):
        have = self.old or self.target
        for index in range(first, first + count):
            length = min(chunk_length(self.size, index), self.found - index * CHUNK)
            if length <= 0:
                raise Failure(messages.FAILED, "there is no such chunk")
            found = digest(have.chunk(index, length))
            if length == chunk_length(self.size, index):
                self.digests[index] = found
            yield found

    def write(self, chunk):
        index, rest = divmod(chunk.offset, CHUNK)
        if rest or index >= chunks_of(self.size):
            raise Failure(messages.FAILED, f"there is no chunk at {chunk.offset}")
        if len(chunk.data) != chunk_length(self.size, index) or digest(chunk.data) != chunk.digest:
            raise Failure(messages.CORRUPTED, f"chunk {index}")
        with self.lock:
            if self.ended:
                raise Failure(messages.ENDED, "the upload has ended")
            if self.old:  # it can only be kept as a whole
                self.old.close()
                self.old = None
                self.digests.clear()
            self.target.write(index, chunk.data)
            self.digests[index] = chunk.digest
            self.arrived += len(chunk.data)

    def finish(self, expected):
        """Returns whether a file that came meanwhile was kept."""
        with self.lock:
            if len(self.digests) != chunks_of(self.size):
                raise Failure(messages.FAILED, "a chunk is missing")
            if digest(b"".join(self.digests[index] for index in sorted(self.digests))) != expected:
                raise Failure(messages.CORRUPTED, "the whole file")
            if self.old:
                self.target.remove()
                return False
            return not self.target.complete(self.size, self.keep)

    def end(self):
        with self.lock:
            self.ended = True
            if not self.calls:
                self.close()

    def close(self):
        self.target.close()
        if self.old:
            self.old.close()


def outcome(error):
    """The fields `status` and `reason` of an answer."""
    if isinstance(error, Failure):
        return {"status": error.status, "reason": error.reason}
    unsafe = isinstance(error, UnicodeError)
    return {"status": messages.UNSAFE_NAME if unsafe else STATUS_OF.get(error.errno, messages.FAILED),
            "reason": str(error)}


def answering(operation):
    """Makes a failure of an operation the status of its answer."""
    answer = OPERATIONS[operation.__name__][1]

    @functools.wraps(operation)
    def call(self, request, context):
        try:
            found = operation(self, request, context)
            found.status = found.status  # every answer has one, also where it is DONE, the default
            return found
        except (Failure, OSError, UnicodeError) as error:
            return answer(**outcome(error))

    return call


class Box:
    """The operations, each called with a request, or a stream of them, and the context of gRPC."""

    def __init__(self, root):
        self.served = os.path.realpath(root)
        self.root = os.path.dirname(self.served)  # a transfer may be of all that is served
        self.transfers = Handles(MOST_TRANSFERS)
        self.uploads = Handles(MOST_UPLOADS)
        self.lock = threading.RLock()

    def admitted(self, request, writing):
        """The path of a request below the root. An application's box judges `carried` here."""
        kind = "kestaserver.UploadAuthMsg" if writing else "kestaserver.DownloadAuthMsg"
        if request.carried.type_name != kind:
            raise Failure(messages.REFUSED, f"this needs a {kind}")
        if not f"{request.path}/".startswith(f"{self.served}/"):
            raise Failure(messages.REFUSED, f"{request.path} is not in {self.served}")
        below = os.path.basename(self.served) + request.path[len(self.served):]
        components(below)
        return below

    def transfer(self, request, writing=False):
        found = self.transfers.get(request.transfer)
        if found.writing != writing:
            raise Failure(messages.REFUSED, "this transfer goes the other way")
        return found

    # Download

    @answering
    def open(self, request, _):
        path = self.admitted(request, writing=False)
        info = kind_of(self.root, path)
        if info and stat.S_ISDIR(info.st_mode):
            return messages.OpenRsp(folder=True, transfer=self.transfers.add(Transfer(path, writing=False)))
        with Source(self.root, path) as file:
            if file.size > CHUNK:
                return messages.OpenRsp(size=file.size, version=file.version,
                                        transfer=self.transfers.add(Transfer(path, writing=False)))
            data = file.chunk(0)
            return messages.OpenRsp(size=file.size, version=file.version, digest=digest(data), data=data)

    def entries(self, path, below=(), after=()):
        """What is below a folder and comes after `after`, both as names, in the order of the protocol."""
        with parent_of(self.root, "/".join((path, *below, "_"))) as (folder, _):
            found = [(name, os.stat(name, dir_fd=folder, follow_symlinks=False)) for name in os.listdir(folder)
                     if is_utf8(name) and not is_partial(name)]
        if len(below) == MOST_FOLDERS:
            raise Failure(messages.UNSAFE_NAME, "too many nested folders")
        for name, info in sorted(found, key=lambda pair: os.fsencode(pair[0])):
            names = (*below, name)
            known, place = os.fsencode(name), len(below)
            due = os.fsencode(after[place]) if place < len(after) else b""
            if known < due:
                continue
            if stat.S_ISDIR(info.st_mode):
                if known > due:
                    yield messages.Entry(below="/".join(names), folder=True)
                yield from self.entries(path, names, after if known == due else ())
            elif stat.S_ISREG(info.st_mode) and known > due:
                yield messages.Entry(below="/".join(names), size=info.st_size, version=version_of(info))

    @answering
    def list(self, request, _):
        after = tuple(components(request.after)) if request.after else ()
        answer = messages.ListRsp()
        for entry in self.entries(self.transfer(request).path, after=after):
            if len(answer.entries) == PAGE:
                answer.more = True
                break
            answer.entries.append(entry)
        return answer

    @answering
    def fetch(self, request, _):
        transfer = self.transfer(request)
        answer = messages.FetchRsp()
        for entry in request.entries:
            try:
                with Source(self.root, transfer.below(entry)) as file:
                    if file.version != entry.version or file.size > CHUNK:
                        raise Failure(messages.CHANGED, entry.below)
                    data = file.chunk(0)
            except (Failure, OSError, UnicodeError) as error:
                answer.MergeFrom(messages.FetchRsp(**outcome(error)))
                break
            same = digest(data) == entry.digest
            answer.contents.add(digest=digest(data), data=None if same else data)
        return answer

    @answering
    def digests(self, request, _):
        if request.upload:
            upload = self.uploads.get(request.upload)
            with upload:
                return messages.DigestsRsp(digests=b"".join(upload.chunk_digests(request.first_chunk, request.chunks)))
        with self.source(request) as file:
            if request.whole:
                return messages.DigestsRsp(digests=file.whole_digest())
            chunks = range(request.first_chunk, request.first_chunk + min(request.chunks, 256))
            return messages.DigestsRsp(digests=b"".join(digest(file.chunk(index)) for index in chunks))

    def source(self, request):
        """The file that a request is about, which must have the version in the request."""
        file = Source(self.root, self.transfer(request).below(request))
        if file.version != request.version:
            file.close()
            raise Failure(messages.CHANGED, "the file has another version")
        return file

    def read(self, request, context):
        """Answers with a stream: a message for each chunk, the last of which may be a failure."""
        watchdog = Watchdog(IDLE_LIMIT, context.cancel)
        try:
            with self.source(request) as file:
                for index in range(request.first_chunk, request.first_chunk + min(request.chunks, MOST_CHUNKS)):
                    if index >= chunks_of(file.size):
                        raise Failure(messages.FAILED, "there is no such chunk")
                    data = file.chunk(index)
                    yield messages.Chunk(status=messages.DONE, offset=index * CHUNK, digest=digest(data), data=data)
                    watchdog.moved()
                    self.transfers.touch(request.transfer)
        except (Failure, OSError, UnicodeError) as error:
            yield messages.Chunk(**outcome(error))
        finally:
            watchdog.end()

    # Upload

    @answering
    def begin(self, request, _):
        path = (self.transfer(request, writing=True).below(request) if request.transfer
                else self.admitted(request, writing=True))
        components(path)
        if request.keep_existing and self.has_file(path):
            return messages.BeginRsp(status=messages.KEPT)
        with self.lock:
            handle, earlier = self.uploads.find(lambda upload: upload.path == path)
            if earlier and earlier.busy():
                return messages.BeginRsp(status=messages.BUSY, other_bytes=earlier.arrived)
            self.uploads.end(handle)
            upload = Upload(self.root, path, request.size, request.keep_existing, request.transfer)
            return messages.BeginRsp(upload=self.uploads.add(upload), found_size=upload.found,
                                     found_whole=upload.old is not None)

    def has_file(self, path):
        info = kind_of(self.root, path)
        return info is not None and not stat.S_ISDIR(info.st_mode)

    @answering
    def write(self, requests, context):
        watchdog = Watchdog(IDLE_LIMIT, context.cancel)
        try:
            first = next(requests)
            upload = self.uploads.get(first.upload)
            with upload:
                upload.write(first)
                for chunk in requests:
                    watchdog.moved()
                    self.transfers.touch(upload.transfer)
                    self.uploads.get(first.upload).write(chunk)
            return messages.WriteRsp()
        except StopIteration:
            return messages.WriteRsp(status=messages.FAILED, reason="there is no chunk")
        finally:
            watchdog.end()

    @answering
    def finish(self, request, _):
        upload = self.uploads.get(request.upload)
        try:
            with upload:
                return messages.FinishRsp(kept=upload.finish(request.digest))
        finally:
            self.uploads.end(request.upload)

    @answering
    def store(self, request, _):
        path = (self.transfer(request, writing=True).path if request.transfer
                else self.admitted(request, writing=True))
        answer = messages.StoreRsp()
        for number, item in enumerate(request.items):
            target = f"{path}/{item.below}" if item.below else path
            components(target)
            if number == 0:
                answer.existed = kind_of(self.root, target) is not None
            if item.folder:
                self.make_folder(target)
            elif request.keep_existing and self.has_file(target):
                answer.kept += 1
            elif item.HasField("data"):
                answer.kept += not self.store_file(target, item, request.keep_existing)
            elif not self.has_the_same(target, item):
                answer.wanted.append(number)
        if request.items and request.items[0].folder and not request.items[0].below:
            answer.transfer = self.transfers.add(Transfer(path, writing=True))
        return answer

    def make_folder(self, path):
        with parent_of(self.root, path, make=True) as (folder, name):
            try:
                os.mkdir(name, dir_fd=folder)
            except FileExistsError:
                if not stat.S_ISDIR(os.stat(name, dir_fd=folder, follow_symlinks=False).st_mode):
                    raise Failure(messages.WRONG_KIND, f"{path} is not a folder") from None

    def store_file(self, path, item, keep):
        if digest(item.data) != item.digest or len(item.data) > CHUNK:
            raise Failure(messages.CORRUPTED, path)
        with self.lock:
            self.uploads.end(self.uploads.find(lambda upload: upload.path == path)[0])
        return put_whole(self.root, path, item.data, keep, make=True)

    def has_the_same(self, path, item):
        info = kind_of(self.root, path)
        if not info or not stat.S_ISREG(info.st_mode) or info.st_size != item.size:
            return False
        with Source(self.root, path) as file:
            return digest(file.chunk(0)) == item.digest


class TokenCheck(grpc.ServerInterceptor):
    """Refuses calls without the token."""

    def __init__(self, token):
        self.expected = f"Bearer {token}"
        self.refusal = grpc.unary_unary_rpc_method_handler(
            lambda _, context: context.abort(grpc.StatusCode.UNAUTHENTICATED, "the token is not accepted"))

    def intercept_service(self, continuation, call):
        given = dict(call.invocation_metadata).get("authorization", "")
        return continuation(call) if secrets.compare_digest(given, self.expected) else self.refusal


def serve(box, token, address):
    """Starts to serve; returns the server and its port."""
    server = grpc.server(futures.ThreadPoolExecutor(16), interceptors=[TokenCheck(token)], options=OPTIONS)

    def handler(operation, request, answer, shape):
        return getattr(grpc, f"{shape}_rpc_method_handler")(operation, request_deserializer=request.FromString,
                                                            response_serializer=answer.SerializeToString)

    server.add_generic_rpc_handlers((
        grpc.method_handlers_generic_handler(BOX, {name: handler(getattr(box, name), *types)
                                                   for name, types in OPERATIONS.items()}),
        grpc.method_handlers_generic_handler(HUB, {"hello": handler(
            lambda *_: hubline_pb2.HelloRsp(server="box.py"), *HELLO, "unary_unary")})))
    port = server.add_insecure_port(address)
    server.start()
    return server, port


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("root")
    parser.add_argument("--listen", default="127.0.0.1:0", metavar="HOST:PORT")
    parser.add_argument("--token-file", required=True)
    options = parser.parse_args()
    with open(options.token_file, encoding="ascii") as file:
        token = file.read().strip()
    server, port = serve(Box(options.root), token, options.listen)
    print(f"{options.listen.rpartition(':')[0]}:{port}", flush=True)
    signal.sigwait({signal.SIGTERM, signal.SIGINT})
    server.stop(None).wait()


if __name__ == "__main__":
    signal.pthread_sigmask(signal.SIG_BLOCK, {signal.SIGTERM, signal.SIGINT})
    main()
