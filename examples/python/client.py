#!/usr/bin/python3
"""Moves a file or a folder between this machine and a storage box, verified and resumed:

    client.py get BOX PATH-ON-BOX LOCAL-PATH --token-file FILE --user NAME [--keep]
    client.py put BOX LOCAL-PATH PATH-ON-BOX --token-file FILE --user NAME [--keep]

BOX is an address as `lumo boxes` lists it; a disk's folder on its box is in `lumo disks`. haul.py says what is
needed to run this. It moves one file at a time, in plain text; docs/bulkhaul.md describes the protocol."""

import argparse
import os
import stat
import sys
import time

import grpc
import kestaserver_pb2
from haul import (BOX, CHUNK, HELLO, HUB, MOST_DATA, MOST_DIGESTS, MOST_FILES, MOST_FOLDERS, OPERATIONS, OPTIONS,
                  Failure, Partial, Source, Watchdog, chunk_length, chunks_of, components, digest, is_partial, kind_of,
                  messages, parent_of, put_whole, runs)

STALL_LIMIT = 60  # seconds


class Client:
    """Transfers with one box. `moved` counts the bytes of files that went over the connection."""

    def __init__(self, address, token, user):
        self.channel = grpc.insecure_channel(address, options=OPTIONS)
        self.metadata = [("authorization", f"Bearer {token}")]
        self.user = user
        self.moved = 0
        self.calls = {name: self.bind(f"/{BOX}/{name}", *types) for name, types in OPERATIONS.items()}
        self.bind(f"/{HUB}/hello", *HELLO, "unary_unary")(HELLO[0](client="client.py"), metadata=self.metadata,
                                                         timeout=STALL_LIMIT)

    def bind(self, path, request, answer, shape):
        return getattr(self.channel, shape)(path, request_serializer=request.SerializeToString,
                                            response_deserializer=answer.FromString)

    def call(self, name, request, *expected):
        """Returns the answer to a request if its status is DONE or one of those expected."""
        answer = self.calls[name](request, metadata=self.metadata, timeout=STALL_LIMIT)
        return checked(answer, *expected)

    def carried(self, kind):
        message = kind(data_class=1, user_name=self.user)
        return messages.Carried(type_name=kind.DESCRIPTOR.full_name, body=message.SerializeToString())

    # Download

    def get(self, path, target, keep=False):
        self.repeat(lambda: self.get_once(path, target, keep))

    def get_once(self, path, target, keep):
        root, name = os.path.split(os.path.abspath(target))
        found = self.call("open", messages.OpenReq(carried=self.carried(kestaserver_pb2.DownloadAuthMsg), path=path))
        if found.folder:
            self.get_folder(found.transfer, root, name, keep)
        elif keep and kind_of(root, name):
            return
        elif found.size > CHUNK:
            self.get_large(found.transfer, None, found.size, found.version, root, name, keep)
        else:
            self.put_small(found.data, found.digest, found.size, root, name, keep)

    def put_small(self, data, expected, size, root, name, keep):
        if digest(data) != expected or len(data) != size:
            raise Failure(messages.CORRUPTED, name)
        self.moved += size
        put_whole(root, name, data, keep)

    def get_large(self, transfer, below, size, version, root, name, keep):
        with Partial(root, name) as target:
            known = self.compare_download(transfer, below, size, version, root, name, target)
            if known is None:
                target.remove()
                return  # the old file is the same
            missing = [index for index in range(chunks_of(size)) if index not in known]
            for first, count in runs(missing):
                request = messages.RunReq(transfer=transfer, below=below, version=version, first_chunk=first,
                                          chunks=count)
                self.read_run(request, size, target, known)
            whole = messages.DigestsReq(transfer=transfer, below=below, version=version, whole=True)
            if self.call("digests", whole).digests != digest(b"".join(known[index] for index in sorted(known))):
                raise Failure(messages.CORRUPTED, f"{name} as a whole")
            target.complete(size, keep)

    def compare_download(self, transfer, below, size, version, root, name, target):
        """Returns the digests, by chunk, of what the partial file has; None if the old target is the file already."""
        def compare(have, length):
            known = {}
            complete = [index for index in range(chunks_of(size))
                        if index * CHUNK + chunk_length(size, index) <= length]
            for start in range(0, len(complete), MOST_DIGESTS):
                part = complete[start:start + MOST_DIGESTS]
                answer = self.call("digests", messages.DigestsReq(transfer=transfer, below=below, version=version,
                                                                  first_chunk=part[0], chunks=len(part))).digests
                for place, index in enumerate(part):
                    here = digest(have.chunk(index, chunk_length(size, index)))
                    if here == answer[16 * place:16 * place + 16]:
                        known[index] = here
            return known

        if target.size():
            return compare(target, target.size())
        old = kind_of(root, name)
        if old and stat.S_ISREG(old.st_mode) and old.st_size == size:
            with Source(root, name) as file:
                if len(compare(file, size)) == chunks_of(size):
                    return None
        return {}

    def read_run(self, request, size, target, known):
        stream = self.calls["read"](request, metadata=self.metadata)
        watchdog = Watchdog(STALL_LIMIT, stream.cancel)
        try:
            expected = request.first_chunk
            for chunk in stream:
                watchdog.moved()
                checked(chunk)
                if chunk.offset != expected * CHUNK or len(chunk.data) != chunk_length(size, expected):
                    raise Failure(messages.FAILED, "the box sent another chunk than was due")
                if digest(chunk.data) != chunk.digest:
                    raise Failure(messages.CORRUPTED, f"chunk {expected}")
                target.write(expected, chunk.data)
                known[expected] = chunk.digest
                self.moved += len(chunk.data)
                expected += 1
            if expected != request.first_chunk + request.chunks:
                raise Failure(messages.FAILED, "the box sent too few chunks")
        finally:
            watchdog.end()
            stream.cancel()

    def get_folder(self, transfer, root, name, keep):
        make_folder(root, name)
        target = os.path.join(root, name)
        batch, after, more = Batch(lambda files: self.fetch(transfer, files, target, keep)), None, True
        while more:
            page = self.call("list", messages.ListReq(transfer=transfer, after=after))
            for entry in page.entries:
                components(entry.below)
                if entry.folder:
                    make_folder(target, entry.below)
                elif keep and kind_of(target, entry.below):
                    continue
                elif entry.size > CHUNK:
                    self.get_large(transfer, entry.below, entry.size, entry.version, target, entry.below, keep)
                else:
                    batch.add(entry, entry.size)
            more = page.more
            if more and not page.entries:
                raise Failure(messages.FAILED, "the box sent a page without entries")
            after = page.entries[-1].below if page.entries else None
        batch.end()

    def fetch(self, transfer, batch, target, keep):
        request = messages.FetchReq(transfer=transfer, entries=batch)
        for entry in request.entries:
            old = kind_of(target, entry.below)
            if old and stat.S_ISREG(old.st_mode) and old.st_size == entry.size:
                with Source(target, entry.below) as file:
                    entry.digest = digest(file.chunk(0))
        answer = self.calls["fetch"](request, metadata=self.metadata, timeout=STALL_LIMIT)
        for entry, content in zip(request.entries, answer.contents):
            if content.HasField("data") or content.digest != entry.digest:
                self.put_small(content.data, content.digest, entry.size, target, entry.below, keep)
        checked(answer)
        if len(answer.contents) != len(batch):
            raise Failure(messages.FAILED, "the box sent too few files")

    # Upload

    def put(self, source, path, keep=False):
        self.repeat(lambda: self.put_once(source, path, keep))

    def put_once(self, source, path, keep):
        root, name = os.path.split(os.path.abspath(source))
        target = {"carried": self.carried(kestaserver_pb2.UploadAuthMsg), "path": path}
        if os.path.isdir(source):
            self.put_folder(source, target, keep)
        elif os.stat(source).st_size > CHUNK:
            self.put_large(root, name, target, keep)
        else:
            self.store(root, [(name, None)], target, keep)

    def put_large(self, root, below, target, keep):
        with Source(root, below, follow=True) as source:
            begun = self.begin(messages.BeginReq(size=source.size, keep_existing=keep, **target))
            if begun.status == messages.KEPT:
                return
            digests = [digest(source.chunk(index)) for index in range(chunks_of(source.size))]
            same = self.compare_upload(begun, digests, source.size)
            if begun.found_whole and len(same) < len(digests):
                same = set()
            for first, count in runs(index for index in range(len(digests)) if index not in same):
                self.write_run(begun.upload, source, digests, first, count)
            self.call("finish", messages.FinishReq(upload=begun.upload, digest=digest(b"".join(digests))))

    def begin(self, request):
        """Waits while another client uploads to the same path, as long as that one gets on."""
        bytes_before, since = None, time.monotonic()
        while True:
            answer = self.call("begin", request, messages.KEPT, messages.BUSY)
            if answer.status != messages.BUSY:
                return answer
            if answer.other_bytes != bytes_before:
                bytes_before, since = answer.other_bytes, time.monotonic()
            if time.monotonic() - since > STALL_LIMIT:
                raise Failure(messages.BUSY, answer.reason)
            time.sleep(0.5)

    def compare_upload(self, begun, digests, size):
        """Returns the numbers of the chunks that the box has, complete and the same."""
        same = set()
        complete = [index for index in range(len(digests))
                    if index * CHUNK + chunk_length(size, index) <= begun.found_size]
        for start in range(0, len(complete), MOST_DIGESTS):
            part = complete[start:start + MOST_DIGESTS]
            answer = self.call("digests", messages.DigestsReq(upload=begun.upload, first_chunk=part[0],
                                                              chunks=len(part))).digests
            same.update(index for place, index in enumerate(part)
                        if answer[16 * place:16 * place + 16] == digests[index])
        return same

    def write_run(self, upload, source, digests, first, count):
        watchdog = None

        def chunks():
            for index in range(first, first + count):
                if watchdog:
                    watchdog.moved()
                data = source.chunk(index)
                yield messages.Chunk(upload=upload if index == first else None, offset=index * CHUNK,
                                     digest=digests[index], data=data)
                self.moved += len(data)

        call = self.calls["write"].future(chunks(), metadata=self.metadata)
        watchdog = Watchdog(STALL_LIMIT, call.cancel)
        try:
            checked(call.result())
        finally:
            watchdog.end()

    def put_folder(self, source, target, keep):
        items = list(items_of(source))  # first, so that what can't be moved fails before anything moves
        answer = self.call("store", messages.StoreReq(keep_existing=keep, items=[messages.Item(folder=True)], **target))
        transfer = {"transfer": answer.transfer}
        batch = Batch(lambda pairs: self.store(source, pairs, transfer, keep, answer.existed))
        for below, info in items:
            if stat.S_ISDIR(info.st_mode):
                batch.add((None, below), 0)
            elif info.st_size <= CHUNK:
                batch.add((below, below), info.st_size)
            else:
                self.put_large(source, below, {**transfer, "below": below}, keep)
        batch.end()

    def store(self, root, batch, target, keep, ask_first=False):
        """Sends folders and small files, pairs of the local file, None for a folder, and its path below the target."""
        items = [self.item(root, *pair) for pair in batch]
        if ask_first:
            asked = [messages.Item(below=item.below, folder=item.folder, digest=item.digest,
                                   size=len(item.data) if item.HasField("data") else None) for item in items]
            answer = self.call("store", messages.StoreReq(keep_existing=keep, items=asked, **target))
            items = [items[index] for index in answer.wanted]
        if items:
            self.call("store", messages.StoreReq(keep_existing=keep, items=items, **target))
            self.moved += sum(len(item.data) for item in items)

    @staticmethod
    def item(root, local, below):
        if local is None:
            return messages.Item(below=below, folder=True)
        with Source(root, local, follow=True) as source:
            data = source.chunk(0)
            if len(data) != source.size:
                raise Failure(messages.CHANGED, local)
            return messages.Item(below=below, digest=digest(data), data=data)

    @staticmethod
    def repeat(transfer):
        """Begins again when the box has forgotten a handle: what has arrived is not moved twice."""
        for attempt in range(3):
            try:
                return transfer()
            except Failure as failure:
                if failure.status != messages.ENDED or attempt == 2:
                    raise


class Batch:
    """Collects small files, and gives them to `send` before they are too many or too large together."""

    def __init__(self, send):
        self.send = send
        self.items = []
        self.size = 0

    def add(self, item, size):
        if len(self.items) == MOST_FILES or self.size + size > MOST_DATA:
            self.end()
        self.items.append(item)
        self.size += size

    def end(self):
        if self.items:
            self.send(self.items)
        self.items = []
        self.size = 0


def checked(answer, *expected):
    if not answer.HasField("status"):
        raise Failure(messages.FAILED, "the box answered without a status")
    if answer.status != messages.DONE and answer.status not in expected:
        raise Failure(answer.status, answer.reason)
    return answer


def make_folder(root, below):
    with parent_of(root, below) as (folder, name):
        try:
            os.mkdir(name, dir_fd=folder)
        except FileExistsError:
            if not stat.S_ISDIR(os.stat(name, dir_fd=folder, follow_symlinks=False).st_mode):
                raise Failure(messages.WRONG_KIND, f"{below} is not a folder") from None


def items_of(source, below=""):
    """What is in a folder: paths below it and what stat() says, a folder before its content."""
    for name in sorted(os.listdir(os.path.join(source, below)), key=os.fsencode):
        if is_partial(name):
            continue
        path = f"{below}/{name}" if below else name
        local = os.path.join(source, path)
        info = os.stat(local)
        try:
            path.encode()
        except UnicodeEncodeError:
            raise Failure(messages.UNSAFE_NAME, repr(path)) from None
        is_folder = stat.S_ISDIR(info.st_mode)
        if is_folder and os.path.islink(local) or not is_folder and not stat.S_ISREG(info.st_mode):
            raise Failure(messages.WRONG_KIND, path)
        yield path, info
        if is_folder:
            yield from items_of(source, path)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("way", choices=["get", "put"])
    parser.add_argument("box")
    parser.add_argument("source")
    parser.add_argument("target")
    parser.add_argument("--token-file", required=True)
    parser.add_argument("--user", required=True)
    parser.add_argument("--keep", action="store_true", help="leave files that exist as they are")
    options = parser.parse_args()
    try:
        with open(options.token_file, encoding="ascii") as file:
            client = Client(options.box, file.read().strip(), options.user)
        getattr(client, options.way)(options.source, options.target, options.keep)
    except grpc.RpcError as error:
        print(f"client.py: {error.code().name}: {error.details()}", file=sys.stderr)
        return 1
    except (Failure, OSError) as error:
        print(f"client.py: {error}", file=sys.stderr)
        return 1
    print(f"done, {client.moved} bytes moved")
    return 0


if __name__ == "__main__":
    sys.exit(main())
