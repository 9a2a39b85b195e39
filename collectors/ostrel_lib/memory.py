# SPDX-License-Identifier: Apache-2.0
"""Memory and swap as the panel counts them, from /proc/meminfo and the memory that holds compressed pages."""
from __future__ import annotations

from ostrel_lib.files import names, number, read

KIB_PER_GIB = 1048576
LARGEST_KIB = 2**53

PINNED = (
    b"Unevictable", b"SUnreclaim", b"KernelStack", b"PageTables", b"SecPageTables", b"Percpu", b"Hugetlb",
)
"""Memory that the kernel can neither drop nor swap: locked pages, its own unreclaimable structures, and pages
set aside as huge ones. Vmalloc is left out, since it counts the kernel's stacks a second time."""


def memory_fields(text: bytes) -> dict[bytes, int]:
    """The fields of /proc/meminfo in KiB by name. A field that is negative, not a number or beyond 2^53 is
    absent; of a field that stands twice the first counts."""
    fields: dict[bytes, int] = {}
    for line in text.split(b"\n"):
        name, colon, rest = line.partition(b":")
        words = rest.split(None, 1)
        if not colon or not words or not words[0].isdigit() or len(words[0]) > 16:
            continue
        value = int(words[0])
        if value <= LARGEST_KIB and name not in fields:
            fields[name] = value
    return fields


def used_kib(fields: dict[bytes, int]) -> int:
    """Memory that can't be had back without swapping: neither free, nor file cache, nor reclaimable kernel
    memory. 0 when the total or the free memory is unknown."""
    if b"MemTotal" not in fields or b"MemFree" not in fields:
        return 0
    file_cache = max(0, fields.get(b"Cached", 0) - fields.get(b"Shmem", 0))
    free_or_droppable = (
        fields[b"MemFree"] + fields.get(b"Buffers", 0) + file_cache + fields.get(b"SReclaimable", 0)
    )
    return max(0, fields[b"MemTotal"] - free_or_droppable)


def ram(fields: dict[bytes, int], compressed_kib: int) -> dict[str, object]:
    """The snapshot's `ram`, in GiB."""
    total = fields.get(b"MemTotal", 0)
    used = used_kib(fields)
    return {
        "total": gib(total),
        "used": gib(used),
        "used_pct": min(100, percent(used, total)),
        "wired": gib(sum(fields.get(name, 0) for name in PINNED)),
        "compressed": gib(compressed_kib),
        "free": gib(fields.get(b"MemFree", 0)),
    }


def swap(fields: dict[bytes, int], swaps: bytes) -> dict[str, object]:
    """The snapshot's `swap`: MiB rounded down, and GiB. `swaps` is the text of /proc/swaps."""
    total = fields.get(b"SwapTotal", 0)
    free = fields.get(b"SwapFree", total)
    used = max(0, total - free)
    return {
        "total": total // 1024,
        "used": used // 1024,
        "free": free // 1024,
        "used_pct": percent(used // 1024, total // 1024),
        "total_gb": gib(total),
        "used_gb": gib(used),
        "free_gb": gib(free),
        "meaning": swap_meaning(total, swaps),
    }


def swap_meaning(total_kib: int, swaps: bytes) -> str:
    """One line on what the swap figures say on this machine."""
    if total_kib == 0:
        return "no swap space is configured on this machine"
    devices = [line.split(None, 1)[0] for line in swaps.split(b"\n")[1:] if line.strip()]
    compressed = [device for device in devices if device.startswith(b"/dev/zram")]
    if compressed and len(compressed) == len(devices):
        place = "compressed in memory (zram)"
    elif compressed:
        place = "compressed in memory (zram) or on disk"
    else:
        place = "on disk"
    return f"memory pages kept {place}; they stay until their owner needs them, so use alone is no pressure"


def compressed_kib(fields: dict[bytes, int], sys_root: str) -> int:
    """Memory that holds compressed pages: the zswap pool and the zram devices."""
    total = fields.get(b"Zswap", 0)
    for device in names(sys_root + "/block"):
        if device.startswith("zram"):
            # orig_data_size compr_data_size mem_used_total ..., in bytes
            sizes = read(sys_root + "/block/" + device + "/mm_stat").split()
            total += number(sizes[2]) // 1024 if len(sizes) > 2 else 0
    return total


def gib(kib: int) -> float:
    """KiB as GiB, to about a MiB."""
    return round(kib / KIB_PER_GIB, 3)


def percent(part: float, whole: float) -> int:
    """A share in whole percent, halves up; 0 of nothing."""
    return int(part / whole * 100 + 0.5) if whole > 0 else 0
