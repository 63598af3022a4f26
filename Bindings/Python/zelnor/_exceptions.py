"""What the library raises: a tree of classes like that of its C++ side.

Every tag of an exception is an attribute, which is None when the exception does not have it.
"""

from __future__ import annotations

from typing import TYPE_CHECKING, Optional, Tuple

if TYPE_CHECKING:
    from ._values import PropertyType, TargetDifference

__all__ = [
    "BadJson",
    "CheckedPropertyHasDifferentTypeException",
    "ConfException",
    "ConstraintException",
    "ConstraintIsNotApplicableForTypeException",
    "CoreException",
    "DrawingException",
    "FormatException",
    "HelperException",
    "JobException",
    "LinkExists",
    "LinkNotFound",
    "MediaException",
    "MethodIsNotApplicable",
    "NodeNotFound",
    "PlanException",
    "PresetException",
    "PresetFileException",
    "ProbeException",
    "ProfileException",
    "PropertyException",
    "RecordIndexError",
    "RecordKeyError",
    "RecordTypeError",
    "RunException",
    "TranscodeFailed",
    "VerificationFailed",
    "ZelnorException",
]


class ZelnorException(Exception):
    """The root of all exceptions of the library. Its text is a sentence for people."""

    description: Optional[str] = None
    """What went wrong, if the exception has a text of its own."""
    call_stack: Optional[str] = None
    """The call stack of the throw, one frame a line."""
    unit: Optional[str] = None
    """The source that threw."""
    line: Optional[int] = None
    """The line of that source."""


class CoreException(ZelnorException):
    """A failure of streams or records."""


class PropertyException(CoreException):
    """A record lacks what it was asked for, or cannot hold what it was given."""

    property_name: Optional[str] = None
    """The name of the record that refused."""
    property_type: Optional[PropertyType] = None
    """What that record holds."""
    method_name: Optional[str] = None
    """The operation that was refused."""


class RecordKeyError(PropertyException, KeyError):
    """A group does not have a child of that name."""

    # That of KeyError shows the sentence as a quoted key.
    __str__ = Exception.__str__


class RecordIndexError(PropertyException, IndexError):
    """A group does not have a child at that position."""


class RecordTypeError(PropertyException, TypeError):
    """A record holds something else than what it was asked for."""


class MethodIsNotApplicable(PropertyException):
    """Something that is not a group was to get children."""


class ConfException(ZelnorException):
    """The root of the configuration library's exceptions."""


class PresetException(ConfException):
    """For use by preset managers."""


class ConstraintException(ConfException):
    """For use by the constraints of preset managers."""


class ConstraintIsNotApplicableForTypeException(ConstraintException):
    """A constraint was applied to a record that holds something that it does not support."""


class CheckedPropertyHasDifferentTypeException(ConstraintException):
    """A record that is checked holds something else than its constraint."""


class HelperException(ConfException):
    """For use by helpers of callers."""


class FormatException(ConfException):
    """A codec, sample format or channel layout was not found."""


class ProfileException(ConfException):
    """A failure of a graph."""

    requested_link: Optional[Tuple[int, int]] = None
    """The source and the target of the link that was asked for."""
    requested_node_id: Optional[int] = None
    """The identifier of the node that was asked for."""
    json_bad_structure: Optional[str] = None
    """What is wrong in a job document."""


class NodeNotFound(ProfileException):
    """A graph does not have that node."""


class LinkExists(ProfileException):
    """A graph has that link already, or a node still has it."""


class LinkNotFound(ProfileException):
    """A graph does not have that link."""


class BadJson(ProfileException):
    """A text is not a job document."""


class MediaException(ZelnorException):
    """The root of the media library's exceptions."""

    file: Optional[str] = None
    """The file that was read or written."""
    node: Optional[int] = None
    """The identifier of a node of a job."""
    link: Optional[Tuple[int, int]] = None
    """The nodes that a link of a job connects, source first."""
    stream: Optional[int] = None
    """The index of a stream in its file."""
    key: Optional[str] = None
    """The key of a record, with the names of the groups that hold it."""


class DrawingException(MediaException):
    """A drawing cannot be made: Graphviz is missing or fails."""


class ProbeException(MediaException):
    """A media file cannot be read."""


class PresetFileException(MediaException):
    """A preset file is missing, or it does not hold a preset."""


class PlanException(MediaException):
    """No job can be planned for a media file, a preset and a request."""


class JobException(MediaException):
    """A job document cannot be read, or its job cannot be run as it is."""


class RunException(MediaException):
    """Running a job failed."""


class TranscodeFailed(RunException):
    """ffmpeg failed to make a target, which `file` names."""

    exit_code: Optional[int] = None
    """Of ffmpeg; 128 + the signal's number when a signal ended it."""
    messages: Optional[Tuple[str, ...]] = None
    """The last lines that ffmpeg wrote."""


class VerificationFailed(RunException):
    """A target that was made is not what its job says. It was not put in place."""

    differences: Optional[Tuple[TargetDifference, ...]] = None
    """All differences."""
    kept_file: Optional[str] = None
    """The name under which the file was kept, if that was asked for."""
