"""Values that functions take and return. They are plain: they compare, copy and pickle."""

from __future__ import annotations

from dataclasses import dataclass, field
from enum import Enum, IntEnum
from fractions import Fraction
from os import PathLike
from typing import TYPE_CHECKING, Optional, Sequence, Tuple, Union

from ._record import PropertyType, Record

if TYPE_CHECKING:
    from . import Graph

__all__ = [
    "AcceleratorType",
    "CodecSupport",
    "ColorRange",
    "DocumentFault",
    "DocumentFaultKind",
    "DocumentFaults",
    "DocumentKind",
    "FrameLimit",
    "GroupMediaType",
    "JobDifference",
    "JobFault",
    "JobFaultKind",
    "JobFile",
    "JobReport",
    "JobRequest",
    "Layout",
    "MediaChapter",
    "MediaType",
    "PixelFormatDescription",
    "Place",
    "PlannedJob",
    "PropertyType",
    "RunProgress",
    "RunResult",
    "SampleFormat",
    "SettingOverride",
    "StreamKind",
    "StreamMerge",
    "StreamRequest",
    "TargetDifference",
    "TargetResult",
    "TargetVerification",
    "TopologyFault",
    "TopologyFaultKind",
    "VerificationDepth",
    "VideoColor",
    "VideoHdr",
    "VideoQuality",
]

Groups = Tuple[Tuple[int, ...], ...]


class MediaType(IntEnum):
    """The kinds of stream that a preset describes."""

    VIDEO = 1
    AUDIO = 2
    SUBTITLE = 3


class GroupMediaType(IntEnum):
    """What the files in a group of a file dialog contain."""

    ALL = 0
    VIDEO = 1
    AUDIO = 2
    SUBTITLES = 3
    IMAGES = 4


class StreamKind(Enum):
    """The kinds of stream of a media file."""

    VIDEO = "video"
    AUDIO = "audio"
    SUBTITLE = "subtitle"
    DATA = "data"
    ATTACHMENT = "attachment"
    UNKNOWN = "unknown"


class AcceleratorType(IntEnum):
    """Families of accelerated encoders and decoders."""

    NVENC = 0
    CUDA = 1
    IM_HW = 2
    IM_SW = 3


class ColorRange(IntEnum):
    """The range of a pixel format's values."""

    UNSPECIFIED = 0
    LIMITED = 1
    FULL = 2


class TopologyFaultKind(IntEnum):
    """The reasons why a topology is not valid."""

    TOO_FEW_NODES = 0
    REPEATED_IDS = 1
    UNLINKED_NODES = 2
    CYCLE = 3
    SEVERAL_PARTS = 4


class JobFaultKind(IntEnum):
    """The reasons why a job cannot be run. Those up to SEVERAL_PARTS are of its topology."""

    TOO_FEW_NODES = 0
    REPEATED_IDS = 1
    UNLINKED_NODES = 2
    CYCLE = 3
    SEVERAL_PARTS = 4
    STRUCTURE = 5
    INPUT = 6
    SETTING = 7
    ENCODER = 8
    CONTAINER = 9
    OUTPUT = 10
    LOSS = 11


class DocumentFaultKind(IntEnum):
    """What can be wrong with the text of a job or a preset."""

    SYNTAX = 0
    """The text is not JSON; what follows was not looked at."""
    FORM = 1
    """It is not of the form that every such document has."""
    IGNORED = 2
    """The readers take the document, and pass over this."""
    TOPOLOGY = 3
    STRUCTURE = 4
    """Nodes and links are not source -> raw stream -> target."""
    SETTING = 5
    ENCODER = 6
    CONTAINER = 7


class DocumentKind(IntEnum):
    """What a text is, by what it contains."""

    JOB = 0
    PRESET = 1
    UNKNOWN = 2


class VerificationDepth(IntEnum):
    """How closely a finished file is looked at."""

    OFF = 0
    QUICK = 1
    FULL = 2


@dataclass(frozen=True)
class Place:
    """Where in a job or a preset something is, as much of it as is known."""

    file: str
    node: Optional[int]
    link: Optional[Tuple[int, int]]
    stream_kind: str
    stream: Optional[int]
    key: str
    text: str
    """All of it, for people."""

    def __str__(self) -> str:
        return self.text


@dataclass(frozen=True)
class TopologyFault:
    """One reason why the topology of a graph is not valid, with the nodes that are concerned."""

    kind: TopologyFaultKind
    groups: Groups


@dataclass(frozen=True)
class JobFault:
    """One reason why a job cannot be run."""

    kind: JobFaultKind
    groups: Groups
    """Of a fault of the topology: the nodes that are concerned."""
    place: Place
    reason: str
    name: str
    """The kind, for scripts."""
    sentence: str
    """All of it, for people."""

    def __str__(self) -> str:
        return self.sentence


@dataclass(frozen=True)
class DocumentFault:
    """Something that is wrong with the text of a job or a preset."""

    kind: DocumentFaultKind
    place: Place
    reason: str
    pointer: str
    """The JSON pointer of the value, or of the one that lacks something."""
    line: int
    """Where it begins, from 1."""
    column: int
    """In characters, from 1."""
    offset: int
    """The same from the beginning of the text, in bytes of UTF-8, as is the length."""
    length: int
    found: str
    """As it stands in the text, cut where it is long; "nothing" when something is missing."""
    expected: str
    """Empty where the reason does not say it in this form."""
    nearest: Tuple[str, ...]
    """Names that were probably meant, the likeliest first."""
    name: str
    """The kind, for scripts."""
    sentence: str
    """All of it but the document's name, for people."""

    @property
    def suggestion(self) -> Optional[str]:
        """The name that was most probably meant."""
        return self.nearest[0] if self.nearest else None

    def __str__(self) -> str:
        return f"{self.line}:{self.column}: {self.sentence}"


@dataclass(frozen=True)
class DocumentFaults:
    """What there is to say about the text of a job or a preset."""

    kind: DocumentKind
    faults: Tuple[DocumentFault, ...]
    """In the order of the text."""
    is_complete: bool
    """Whether these are all. After very many, the rest is not told."""

    @property
    def is_valid(self) -> bool:
        """Whether there are none."""
        return not self.faults


@dataclass(frozen=True)
class CodecSupport:
    """Whether streams of a codec can be made in files of a container, and what is like it if not."""

    container: str
    codec: str
    is_held: Optional[bool]
    """Whether the container can hold the codec; None when FFmpeg does not know, and only writing would tell."""
    muxer: str
    """The installed FFmpeg's, for the container; empty when it does not have one."""
    encoder: str
    """The installed FFmpeg's, for the codec; empty when it does not have one."""
    is_encoding_disabled: bool
    """Whether such streams are made only by an encoder that is asked for by its name."""
    has_bitrate_curve: Optional[bool]
    """Whether bitrates have a curve of the codec's own; None for codecs that are not of video."""
    codecs: Tuple[str, ...]
    """Codecs of the same kind that can be made in the container, the best first."""
    containers: Tuple[str, ...]
    """Containers that hold the codec, the best first."""
    reasons: Tuple[str, ...]
    """Why no such stream can be made, as sentences; empty when it can."""


@dataclass(frozen=True)
class JobReport:
    """What there is to say about a job before it runs."""

    faults: Tuple[JobFault, ...]
    losses: Tuple[JobFault, ...]


@dataclass(frozen=True)
class JobDifference:
    """One thing in which two jobs differ. A side that does not have it has an empty text."""

    place: str
    key: str
    one: str
    other: str
    one_value: Optional[Record]
    other_value: Optional[Record]


@dataclass(frozen=True)
class JobFile:
    """A job that was read from a document."""

    name: str
    graph: Graph
    notes: Tuple[str, ...]
    """What the document holds and the graph does not."""


@dataclass(frozen=True)
class PlannedJob:
    """A job, and what its user should know about it."""

    graph: Graph
    output: str
    """The output file's full name."""
    notes: Tuple[str, ...]


@dataclass(frozen=True)
class RunProgress:
    """How far a run is. Times are in microseconds of media."""

    target: int
    target_count: int
    file: str
    pass_number: int
    pass_count: int
    done: int
    duration: Optional[int]
    speed: float
    part: Optional[float]
    """Of this target over all passes, 0 to 1."""
    is_verifying: bool


@dataclass(frozen=True)
class TargetResult:
    """What became of one target of a job."""

    file: str
    is_done: bool
    """Whether the file is complete and in place; else the run was cancelled."""
    warnings: Tuple[str, ...]
    notes: Tuple[str, ...]
    seconds: float
    size: int


@dataclass(frozen=True)
class RunResult:
    """What became of a job."""

    targets: Tuple[TargetResult, ...]

    @property
    def is_done(self) -> bool:
        """Whether every target is done."""
        return all(target.is_done for target in self.targets)


@dataclass(frozen=True)
class TargetDifference:
    """One thing in which a finished file is not what its job says."""

    place: Place
    what: str
    wanted: str
    found: str
    sentence: str

    def __str__(self) -> str:
        return self.sentence


@dataclass(frozen=True)
class VideoQuality:
    """How near the images of a finished video are to those of its source."""

    place: Place
    psnr: Optional[float]
    """In decibels; None when the images are equal."""
    ssim: float


@dataclass(frozen=True)
class TargetVerification:
    """What became of the verification of one target."""

    file: str
    differences: Tuple[TargetDifference, ...]
    notes: Tuple[str, ...]
    quality: Tuple[VideoQuality, ...]


@dataclass(frozen=True)
class VideoColor:
    """How the colours of a video are coded, by FFmpeg's names. What is not known is empty."""

    range: str
    matrix: str
    primaries: str
    transfer: str


@dataclass(frozen=True)
class VideoHdr:
    """What a video tells displays of high dynamic range. What is not known is empty."""

    mastering_display: str
    content_light: str
    dolby_vision: str
    is_only_in_frames: bool


@dataclass(frozen=True)
class MediaChapter:
    """A part of a file's time that has a name. Times are in microseconds."""

    start: int
    end: int
    title: str


@dataclass(frozen=True)
class PixelFormatDescription:
    """A pixel format: its name, components and planes."""

    number: int
    name: str
    components: int
    log2_chroma_width: int
    log2_chroma_height: int
    flags: int
    color_range: int


@dataclass(frozen=True)
class SampleFormat:
    """A sample format of audio."""

    number: int
    bits_per_sample: int
    text: str
    is_planar: bool
    counterpart: int
    """The number of the planar format of a packed one, and the other way round."""


@dataclass(frozen=True)
class Layout:
    """A channel layout of audio."""

    number: int
    channels: int
    text: str


@dataclass
class FrameLimit:
    """A size of frames, in pixels as they are displayed."""

    width: int
    height: int


@dataclass
class StreamRequest:
    """Which streams of the source become streams of the output, and how."""

    chosen: Sequence[int] = ()
    """Indexes of the source's streams; without any, the best ones for the preset."""
    lossless_dvd: bool = False
    audio_languages: Sequence[str] = ()
    """For each of these languages the best audio stream."""
    all_audio: bool = False
    copied: Sequence[StreamKind] = ()
    """Kinds of stream that go into the output unchanged."""
    max_size: Optional[FrameLimit] = None
    may_upscale: bool = False
    allow_disabled: bool = False


@dataclass
class StreamMerge:
    """Two streams of the source that become one."""

    base: int
    overlay: int
    """The index of the stream that is merged into the base."""


@dataclass
class SettingOverride:
    """A setting that takes the place of the preset's."""

    path: str
    """As "video.bitrate"."""
    value: Record
    """The record's name does not matter."""


@dataclass
class JobRequest:
    """What a job shall do beyond what its preset says. Times are in microseconds."""

    output: Union[str, bytes, PathLike[str]] = ""
    streams: StreamRequest = field(default_factory=StreamRequest)
    merges: Sequence[StreamMerge] = ()
    codecs: Sequence[str] = ()
    frame_rate: Union[Fraction, int, None] = None
    settings: Sequence[SettingOverride] = ()
    start: Optional[int] = None
    end: Optional[int] = None
    strict: bool = False
    """Whether a job is refused by which something of the source would be lost."""
