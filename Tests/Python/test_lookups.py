"""Look-ups and calculators."""

from __future__ import annotations

from fractions import Fraction
from typing import Any

import pytest

import zelnor
from zelnor import Record

LISTS = [
    "containers",
    "writable_containers",
    "disabled_parsers",
    "disabled_muxers",
    "disabled_decoders",
    "disabled_encoders",
    "external_decoders",
    "external_encoders",
    "muxer_implementations",
    "parser_implementations",
    "decoder_implementations",
    "encoder_implementations",
    "image_containers",
    "audio_containers",
]


@pytest.mark.parametrize("name", LISTS)
def test_a_list_is_a_new_list_of_texts(name: str) -> None:
    first = getattr(zelnor, name)()
    assert all(isinstance(text, str) for text in first)
    first.append("changed")
    assert "changed" not in getattr(zelnor, name)()


@pytest.mark.parametrize("name", [name for name in LISTS if not name.startswith("disabled_parsers")])
def test_every_container_of_a_list_of_containers_is_known(name: str) -> None:
    if "containers" in name:
        assert [text for text in getattr(zelnor, name)() if not zelnor.is_container(text)] == []


def test_adts_can_be_written_twice() -> None:
    assert zelnor.writable_containers().count("adts") == 2


@pytest.mark.parametrize(
    "call, argument, answer",
    [
        ("is_container", "mp4", True),
        ("is_container", "MP4", False),
        ("is_container", "", False),
        ("is_image_container", "image2", True),
        ("is_audio_container", "mp3", True),
        ("is_audio_container", "mp4", False),
        ("is_audio_bitrate_required", "CODEC_ID_MP3", True),
        ("is_audio_bitrate_required", "CODEC_ID_FLAC", False),
        ("can_read_with_encryption", "", True),
        ("can_copy_with_encryption", "", True),
    ],
)
def test_a_question_has_its_answer(call: str, argument: str, answer: bool) -> None:
    assert getattr(zelnor, call)(argument) is answer


@pytest.mark.parametrize("call", ["is_container", "is_external_decoder", "is_external_encoder", "codec_number"])
@pytest.mark.parametrize("argument", [None, 1, b"mp4"])
def test_a_name_is_a_text(call: str, argument: Any) -> None:
    with pytest.raises(TypeError):
        getattr(zelnor, call)(argument)


def test_codecs_have_media_types() -> None:
    assert zelnor.codec_media_type("CODEC_ID_H264") is zelnor.MediaType.VIDEO
    assert zelnor.codec_media_type("CODEC_ID_MP3") is zelnor.MediaType.AUDIO
    assert zelnor.codec_media_type("CODEC_ID_SRT") is zelnor.MediaType.SUBTITLE
    assert zelnor.codec_media_type("CODEC_ID_NONE") is None
    assert zelnor.codec_media_type("CODEC_ID_H246") is None


def test_codec_numbers_are_translated_both_ways() -> None:
    for codec in ("CODEC_ID_H264", "CODEC_ID_MP3", "CODEC_ID_SRT"):
        assert zelnor.codec_id(zelnor.codec_number(codec)) == codec


def test_a_codec_that_there_is_not_is_refused() -> None:
    with pytest.raises(zelnor.FormatException) as caught:
        zelnor.codec_number("CODEC_ID_H246")
    assert str(caught.value) == "Provided codec textID ('CODEC_ID_H246') is not found in list"
    assert caught.value.call_stack
    assert caught.value.unit


@pytest.mark.parametrize("number", [-(2**31), -5, 2**16 - 1, 2**31 - 1])
def test_a_codec_number_that_there_is_not_is_refused(number: int) -> None:
    with pytest.raises(zelnor.FormatException, match=rf"^Provided codec id \(#{number}\) is not found in list$"):
        zelnor.codec_id(number)


@pytest.mark.parametrize("number", [2**31, 10**400])
def test_a_codec_number_beyond_32_bits_is_an_overflow(number: int) -> None:
    with pytest.raises(OverflowError, match="^expected an integer from -2147483648 to 2147483647$"):
        zelnor.codec_id(number)


@pytest.mark.parametrize("key", ["YUV420P", zelnor.PixFmt.PIX_FMT_YUV420P, 0])
def test_a_pixel_format_is_described(key: Any) -> None:
    described = zelnor.pixel_format(key)
    assert described == zelnor.PixelFormatDescription(0, "YUV420P", 3, 1, 1, 18, 1)
    assert hash(described) == hash(zelnor.pixel_format(0))


@pytest.mark.parametrize("key", ["yuv420p", "", 7777, -2, 2**31 - 1])
def test_a_pixel_format_that_there_is_not_is_refused(key: Any) -> None:
    with pytest.raises(ValueError):
        zelnor.pixel_format(key)


def test_planes_have_sizes() -> None:
    yuv = zelnor.PixFmt.PIX_FMT_YUV420P
    assert [zelnor.plane_width(yuv, 101, plane) for plane in range(3)] == [101, 51, 51]
    assert [zelnor.plane_height(yuv, 101, plane) for plane in range(3)] == [101, 51, 51]


@pytest.mark.parametrize("plane", [-1, 3, 4])
def test_a_plane_that_there_is_not_is_refused(plane: int) -> None:
    with pytest.raises(ValueError, match="^Unexpected plan$"):
        zelnor.plane_width(zelnor.PixFmt.PIX_FMT_YUV420P, 100, plane)


def test_a_color_becomes_a_pixel() -> None:
    assert zelnor.make_color(zelnor.PixFmt.PIX_FMT_RGBA, 0x04030201) == 0x04030201
    assert zelnor.make_color(zelnor.PixFmt.PIX_FMT_BGRA, 0x04030201) == 0x04010203


@pytest.mark.parametrize("color", [-1, 2**32])
def test_a_color_has_32_bits(color: int) -> None:
    with pytest.raises(OverflowError):
        zelnor.make_color(zelnor.PixFmt.PIX_FMT_RGBA, color)


def test_sample_formats_are_described() -> None:
    assert zelnor.sample_format("SAMPLE_FMT_S16") == zelnor.SampleFormat(1, 16, "SAMPLE_FMT_S16", False, 6)
    assert zelnor.sample_format(6).is_planar


def test_channel_layouts_are_described() -> None:
    assert zelnor.channel_layout("STEREO") == zelnor.Layout(2, 2, "STEREO")
    assert zelnor.channel_layout(zelnor.ChannelLayout.CH_LAYOUT_MONO).channels == 1
    assert zelnor.channel_layout_of(4).number == zelnor.ChannelLayout.CH_LAYOUT_3POINT1


@pytest.mark.parametrize(
    "call, argument, text",
    [
        ("sample_format", "S16", "Provided sample textId is not found in list"),
        ("sample_format", 99, "Provided sample format is not found in list"),
        ("channel_layout", "stereo", "Provided Channel TextID is not found in list"),
        ("channel_layout", 99, "Provided ChannelLayout is not found in list"),
        ("channel_layout_of", 99, "Provided number of channels is not found in list"),
        ("is_audio_bitrate_required", "CODEC_ID_H264", "Provided audio codec id is not found in list: CODEC_ID_H264"),
    ],
)
def test_a_format_that_there_is_not_is_refused(call: str, argument: Any, text: str) -> None:
    with pytest.raises(zelnor.FormatException) as caught:
        getattr(zelnor, call)(argument)
    assert str(caught.value) == text


def test_groups_of_file_dialogs_have_extensions() -> None:
    groups = zelnor.file_groups()
    assert (zelnor.GroupMediaType.VIDEO, zelnor.IFormatFile.GROUP_ALL_VIDEO) in groups
    assert zelnor.group_extensions(zelnor.IFormatFile.GROUP_ALL_FILES) == ["*"]
    assert "mp3" in zelnor.group_extensions(zelnor.IFormatFile.GROUP_ALL_AUDIO)


def test_a_group_that_there_is_not_is_refused_without_the_call_stack() -> None:
    with pytest.raises(ValueError) as caught:
        zelnor.group_extensions("no group")
    assert str(caught.value) == "Unknown group id"


def test_groups_have_tips() -> None:
    assert zelnor.group_tip(zelnor.IFormatFile.GROUP_ALL_AUDIO).startswith("*.")
    assert zelnor.group_tip("no group") == ""


def test_containers_have_extensions() -> None:
    assert zelnor.default_extension("matroska") == "mkv"
    assert zelnor.default_extension("MATROSKA") == "mkv"
    with pytest.raises(ValueError, match="^Unknown media container name: no such$"):
        zelnor.default_extension("no such")


def test_accelerators_have_encoders() -> None:
    cuda = zelnor.AcceleratorType.CUDA
    encoder = zelnor.accelerated_encoder(cuda, "CODEC_ID_H264")
    assert encoder == zelnor.IFormatCodecVideo.ENCODER_CUDA_H264_IMPL
    assert zelnor.accelerated_encoders(cuda) == [encoder]
    assert zelnor.accelerated_encoder_codecs(cuda) == ["CODEC_ID_H264"]
    decoder = zelnor.accelerated_decoder(cuda, "CODEC_ID_VC1")
    assert decoder in zelnor.accelerated_decoders(cuda)
    assert zelnor.accelerated_decoder_codecs(zelnor.AcceleratorType.NVENC) == []


@pytest.mark.parametrize("accelerator, codec", [(1, "CODEC_ID_MP3"), (9, "CODEC_ID_H264"), (-1, "")])
def test_an_accelerator_without_the_codec_is_refused(accelerator: int, codec: str) -> None:
    with pytest.raises(LookupError, match="^key not found$"):
        zelnor.accelerated_encoder(accelerator, codec)


def test_ffmpeg_describes_its_muxers() -> None:
    assert zelnor.muxer_description("mov") == "QuickTime / MOV"
    assert zelnor.demuxer_description("no such") == ""


# Calculators


def test_a_video_has_a_default_bitrate_and_bounds() -> None:
    arguments = ("CODEC_ID_H264", 1920, 1080, 25, 1)
    assert zelnor.default_video_bitrate(*arguments) == 8191995
    assert zelnor.min_video_bitrate(*arguments) == 4095997
    assert zelnor.max_video_bitrate(*arguments) == 16383990


def test_a_quality_lowers_the_bitrate() -> None:
    without = zelnor.default_video_bitrate("CODEC_ID_H264", 1280, 720, 25)
    assert zelnor.default_video_bitrate("CODEC_ID_H264", 1280, 720, 25, quality=32) < without


def test_a_frame_rate_may_be_a_fraction() -> None:
    rate = Fraction(60000, 1001)
    fraction = zelnor.default_video_bitrate("CODEC_ID_H264", 1280, 720, rate)
    assert fraction == zelnor.default_video_bitrate("CODEC_ID_H264", 1280, 720, float(rate))


@pytest.mark.parametrize("rate", ["25", None, True, [25]])
def test_a_frame_rate_is_a_number(rate: Any) -> None:
    with pytest.raises(TypeError):
        zelnor.default_video_bitrate("CODEC_ID_H264", 1280, 720, rate)


def test_a_frame_rate_that_is_too_large_is_an_overflow() -> None:
    with pytest.raises(OverflowError):
        zelnor.default_video_bitrate("CODEC_ID_H264", 1280, 720, 10**400)


@pytest.mark.parametrize("rate", [float("nan"), float("inf"), -1.0, 0.0])
def test_an_odd_frame_rate_has_an_integer_bitrate(rate: float) -> None:
    assert isinstance(zelnor.default_video_bitrate("CODEC_ID_H264", 1280, 720, rate), int)


@pytest.mark.parametrize("width", [2**63, -(2**63) - 1])
def test_a_width_beyond_64_bits_is_an_overflow(width: int) -> None:
    with pytest.raises(OverflowError):
        zelnor.default_video_bitrate("CODEC_ID_H264", width, 720, 25)


def test_a_curve_has_four_coefficients() -> None:
    assert zelnor.calculate_bitrate(100, 100, 25, [1000, 0, 0, 0]) == 1024000
    with pytest.raises(TypeError):
        zelnor.calculate_bitrate(100, 100, 25, [1000, 0, 0])


def test_a_bitrate_is_scaled_by_its_quality() -> None:
    assert zelnor.norm_bitrate(300, 1) == 300
    assert zelnor.norm_bitrate(300, 32) == 100


def test_the_bitrate_of_a_record_has_bounds() -> None:
    record = Record("format_codec_audio", {"codec_id": "CODEC_ID_MP3", "bitrate": 100000, "bitrate_mode": "VBR"})
    assert (zelnor.min_bitrate(record), zelnor.max_bitrate(record)) == (80000, 120000)
    record["bitrate_mode"] = "CBR"
    assert (zelnor.min_bitrate(record), zelnor.max_bitrate(record)) == (100000, 100000)


def test_a_record_without_a_bitrate_is_refused() -> None:
    with pytest.raises(zelnor.PropertyException) as caught:
        zelnor.min_bitrate(Record("format_codec_audio", {"bitrate_mode": "CBR"}))
    assert caught.value.property_name == "format_codec_audio"
    assert caught.value.property_type is zelnor.PropertyType.GROUP
    assert caught.value.method_name is None


def test_an_unknown_mode_is_refused() -> None:
    record = Record("format_codec_audio", {"bitrate": 1, "bitrate_mode": "fast"})
    with pytest.raises(ValueError, match="^Unexpected bitrate mode: fast$"):
        zelnor.min_bitrate(record)


def test_aspect_ratios_are_converted_both_ways() -> None:
    assert zelnor.frame_to_pixel_aspect(720, 576, 16, 9) == (64, 45)
    assert zelnor.pixel_to_frame_aspect(720, 576, 64, 45) == (16, 9)
    assert zelnor.frame_to_pixel_aspect(0, 0, 0, 0) == (0, 0)


@pytest.mark.parametrize("term", [-1, 2**32])
def test_a_term_has_32_bits(term: int) -> None:
    with pytest.raises(OverflowError, match="^expected an integer from 0 to 4294967295$"):
        zelnor.frame_to_pixel_aspect(720, 576, term, 9)
