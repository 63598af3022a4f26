#include "Media/Options/OptionTables.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace Zelnor::Media
{

namespace
{

/// Options of encoders whose values are numbers, flags and FFmpeg's own names, and which do nothing but
/// change how a stream is encoded. An option that writes a file, prints, opens a device or loads code has no
/// place here, nor has one with the name of an option of the program ffmpeg. (kept: `profile` is one, and
/// hands its value to the encoder.)
constexpr std::string_view kEncoderOptions =
    "2pass 8x8dct a53cc aac_coder aac_is aac_ltp aac_ms aac_pce aac_pns aac_pred aac_tns abr "
    "ad_conv_type adaptive_b adaptive_i aiv alpha_bits alternate_scan application apply_phase_inv "
    "aq-mode aq-strength arnr-max-frames arnr-maxframes arnr-strength arnr-type arnr_max_frames "
    "arnr_strength arnr_type async_depth aud audio_service_type auto-alt-ref avbr_accuracy "
    "avbr_convergence avcintra-class b-bias b-pyramid b_adapt b_depth b_qfactor b_qoffset b_ref_mode "
    "b_sensitivity b_strategy bf bidir_refine bitrate_limit bits_per_mb block_size bluray-compat "
    "border_mask brd_scale bt bufsize cavlc cbr cbr_quality center_mixlev ch_mode channel_coupling "
    "chroma_elim_threshold chroma_sample_location chromaoffset chunks cinema_mode cmp code_size coder "
    "color_primaries color_range color_trc colorspace compression compression_algo compression_level "
    "compressor constrained-encoding context continue_one_color_thresh copyright corpus-complexity "
    "cpl_start_band cplxblur cpu-used cq cr_size cr_threshold crf crf_max cutoff dark_mask "
    "data_partitioning dblk_idc dc dca_adpcm dct deadline delay denoise-block-size denoise-noise-level "
    "dheadphone_mode dia_size dialnorm direct-pred distance disto_alloc dither_type dmix_mode dpb_size "
    "dpi dpm drop-threshold drop_frame_timecode dsur_mode dsurex_mode dtx effort enable-1to4-partitions "
    "enable-ab-partitions enable-angle-delta enable-cdef enable-cfl-intra enable-diff-wtd-comp "
    "enable-dist-wtd-comp enable-dual-filter enable-filter-intra enable-flip-idtx enable-global-motion "
    "enable-interinter-wedge enable-interintra-comp enable-interintra-wedge enable-intra-edge-filter "
    "enable-intrabc enable-masked-comp enable-obmc enable-onesided-comp enable-paeth-intra "
    "enable-palette enable-rect-partitions enable-reduced-reference-set enable-ref-frame-mvs "
    "enable-restoration enable-smooth-interintra enable-smooth-intra enable-tpl enable-tx64 "
    "energy_levels eph err_detect error-resilience error-resilient error_protection error_rate "
    "even_rows_fix exact_rice_parameters extbrc extra_sei fast-pskip fastfirstpass fec field_order "
    "fixed_quality flags flags2 force_duplicated_matrix forced-idr forced_idr format frame-parallel "
    "frame_duration frames_per_packet g gamma gifflags gifimage global_palette global_quality gmc gpb "
    "height hielevel huffman i_qfactor i_qoffset ibias iblock idct idr_interval ildctcmp init_qpB "
    "init_qpI init_qpP int_ref_cycle_dist int_ref_cycle_size int_ref_qp_delta int_ref_type "
    "intra-refresh intra_penalty intra_vlc irreversible iterative_dia_size jfif joint_stereo keyint_min "
    "la_depth lag-in-frames last_pred ldkfs level lmax lmin look_ahead look_ahead_depth "
    "look_ahead_downsampling loop_filter_level loop_filter_sharpness loro_cmixlev loro_surmixlev "
    "lossless low_delay_brc low_power lpc_coeff_precision lpc_passes lpc_type ltrt_cmixlev "
    "ltrt_surmixlev luma_elim_threshold lumi_aq lumi_mask mapping_family max-intra-rate "
    "max_dec_frame_buffering max_extra_cb_iterations max_frame_size max_frame_size_i max_frame_size_p "
    "max_partition_order max_pixels max_prediction_order max_qp_b max_qp_i max_qp_p max_samples "
    "max_slice_size max_strips maxrate maxsection-pct mb_info mbbrc mbcmp mbd mblmax mblmin "
    "mbs_per_slice mbtree me_method me_quality me_range mepc mepre mfmode min_partition_order "
    "min_prediction_order min_qp_b min_qp_i min_qp_p min_strips minrate minsection-pct mixed-refs "
    "mixing_level mode modular motion-est motion_est mpeg_quant mpv_flags msbc multi_dim_quant "
    "multipass mv0_threshold nal-hrd nitris_compat no-scenecut noise-sensitivity noise_reduction "
    "non_deterministic non_linear_quant nonref_p nssew numresolution obmc optimize_mono opus_delay "
    "original overshoot-pct p_mask p_strategy packet_loss per_frame_metadata pic_timing_sei "
    "pre_dia_size precmp pred prediction_order_method preset profile prog prog_order ps psy psymodel "
    "qblur qcomp qdiff qm qmax qmin qp qp_cb_offset qp_cr_offset qsquish quake3_compat quality "
    "quant_deadzone quant_mat quantizer_noise_shaping rc rc-lookahead rc_buf_aggressivity rc_init_cplx "
    "rc_init_occupancy rc_lookahead rc_max_vbv_use rc_min_vbv_use rc_mode rc_qmod_amp rc_qmod_freq rdo "
    "recovery_point_sei reduced-tx-type-set refs repeat_pps reservoir rle room_type row-mt s12m_tc "
    "sc_detection sc_threshold scan_offset scplx_mask sei seq_disp_ext sharpness "
    "single-slice-intra-refresh single_sei_nal_unit sixteen_color_thresh skip_cmp skip_empty_cb "
    "skip_exp skip_factor skip_frame_thresh skip_threshold slice-max-size slice_height slice_width "
    "slicecrc slices sop spatial-aq spatial_aq speed start_one_color_thresh static-thresh "
    "stereo_rematrixing still-picture strict strict_gop strip_number_adaptivity structured_slices "
    "subcmp subq surfaces surround_mixlev tcplx_mask temporal-aq temporal_aq thread_type threads tier "
    "tile-columns tile-rows tile_cols tile_columns tile_height tile_rows tile_width tiles "
    "timecode_frame_start tolerance transform_skip trellis tune tune-content udu_sei umv undershoot-pct "
    "usage use-inter-dct-only use-intra-dct-only use-intra-default-tx-only vad variance_aq vbr "
    "video_format vp8flags wavelet_depth wavelet_type weightb weighted_pred weightp zerolatency";

/// The same for decoders.
constexpr std::string_view kDecoderOptions =
    "alllayers apply_cropping apply_defdispwin apply_phase_inv apply_trc async_depth bits_per_codeword "
    "blank_value bug change_field_order channel_order chroma_sample_location color_primaries "
    "color_range color_trc colorspace compute_clut cons_noisegen core_only custom_stride data_field "
    "deint discard_damaged_percentage dmix_mode downmix drc_scale drop_second_field dual_mono_mode "
    "dvb_substream ec enable_er err_detect extern_huff extra_bits_bug field_order filmgrain flags "
    "flags2 forced_subs_only framethreads gamma gpu_copy heavy_compr height idct keep_ar "
    "keep_ass_markup loro_cmixlev loro_surmixlev lowqual lowres ltrt_cmixlev ltrt_surmixlev max_pixels "
    "max_samples non_pcm_mode operating_point oppoint page part postfilter real_time "
    "real_time_latency_msec skip_alpha skip_bottom skip_cursor skip_frame skip_idct skip_loop_filter "
    "skip_top strict strict-displaywin subimage surfaces target_level thread_type threads thumbnail "
    "tilethreads trans_color txt_chop_spaces txt_chop_top txt_default_region txt_duration txt_format "
    "txt_left txt_opacity txt_top txt_transparent use_buggy_lpc width x264_build";

/// Of `flags`. Those of the passes write files into the working folder.
constexpr std::string_view kFlags =
    "aic bitexact cgop drop_changed global_header gray ildct ilme loop low_delay mv4 output_corrupt "
    "qpel unaligned";

/// Of `flags2`.
constexpr std::string_view kFlags2 =
    "chunks export_mvs fast ignorecrop local_header noout showall skip_manual";

/// Parameters of x264 whose values are numbers. Those that name files, read matrices, log or load code are
/// not here, and none is known by a second spelling.
constexpr std::string_view kX264Numbers =
    "8x8dct aq-mode aq-strength aud avcintra-class b-adapt b-bias bff bframes bitrate bluray-compat "
    "cabac chroma-me chroma-qp-offset chromaloc constrained-intra cplxblur crf crf-max dct-decimate "
    "deadzone-inter deadzone-intra deblock dpb-size fake-interlaced fast-pskip filler force-cfr "
    "frame-packing fullrange global-header interlaced intra-refresh ipratio keyint level "
    "lookahead-threads mbtree merange min-keyint mixed-refs mvrange mvrange-thread no-8x8dct no-cabac "
    "no-chroma-me no-dct-decimate no-deblock no-fast-pskip no-mbtree no-mixed-refs no-psy no-scenecut "
    "no-weightb non-deterministic nr open-gop pbratio pic-struct psy psy-rd qblur qcomp qp qpmax qpmin "
    "qpstep ratetol rc-lookahead ref repeat-headers scenecut slice-max-mbs slice-max-size slice-min-mbs "
    "sliced-threads slices slices-max sps-id stitchable subme sync-lookahead tff threads trellis "
    "vbv-bufsize vbv-init vbv-maxrate weightb weightp";

/// Parameters of x264 whose values are words.
constexpr std::string_view kX264Words =
    "analyse avcintra-flavor b-pyramid colormatrix colorprim cqm direct me nal-hrd overscan partitions "
    "range transfer videoformat";

/// The same of x265.
constexpr std::string_view kX265Numbers =
    "allow-non-conformance amp analyze-src-pics annexb aq-mode aq-motion aq-strength aud b-adapt "
    "b-intra b-pyramid bframe-bias bframes bitrate cbqpoffs chromaloc const-vbv constrained-intra "
    "copy-pic cplxblur crf crf-max crf-min crqpoffs ctu cu-lossless cutree deblock dup-threshold "
    "dynamic-rd early-skip eob eos fast-intra field frame-dup frame-threads gop-lookahead hash hdr10 "
    "hdr10-opt hevc-aq high-tier hist-scenecut hrd hrd-concat idr-recovery-sei info interlace "
    "intra-refresh ipratio keyint level-idc limit-modes limit-refs limit-sao limit-tu lookahead-slices "
    "lookahead-threads lossless max-cll max-luma max-merge max-tu-size merange min-cu-size min-keyint "
    "min-luma no-amp no-b-intra no-b-pyramid no-cutree no-deblock no-early-skip no-fast-intra "
    "no-high-tier no-info no-open-gop no-rect no-repeat-headers no-rskip no-sao no-scenecut no-signhide "
    "no-strong-intra-smoothing no-temporal-mvp no-weightb no-weightp no-wpp nr-inter nr-intra open-gop "
    "opt-cu-delta-qp opt-qp-pps opt-ref-list-length-pps pbratio pme pmode psy-rd psy-rdoq qblur qcomp "
    "qg-size qp qpmax qpmin qpstep radl rc-lookahead rd rd-refine rdoq-level rdpenalty rect ref "
    "repeat-headers rskip rskip-edge-threshold sao sao-non-deblock scenecut scenecut-bias selective-sao "
    "signhide single-sei slices splitrd-skip ssim-rd strict-cbr strong-intra-smoothing subme "
    "temporal-layers temporal-mvp tskip tskip-fast tu-inter-depth tu-intra-depth uhd-bd vbv-bufsize "
    "vbv-end vbv-init vbv-maxrate weightb weightp wpp";

/// The same of x265.
constexpr std::string_view kX265Words =
    "colormatrix colorprim master-display me overscan range transfer videoformat";

/// Parameters of SVT-AV1 whose values are numbers.
constexpr std::string_view kSvtAv1Numbers =
    "aq-mode bias-pct buf-initial-sz buf-optimal-sz bufsz color-primaries color-range crf enable-cdef "
    "enable-dg enable-dlf enable-hdr enable-mfmv enable-overlays enable-qm enable-restoration enable-tf "
    "enable-tpl-la fast-decode film-grain film-grain-denoise gop-constraint-rc hierarchical-levels "
    "irefresh-type keyint level lookahead lp matrix-coefficients max-qp maxsection-pct mbr min-qp "
    "minsection-pct overshoot-pct pred-struct preset profile qm-max qm-min qp rc resize-mode rmv scd "
    "scm superres-denom superres-kf-denom superres-kf-qthres superres-mode superres-qthres tbr tier "
    "tile-columns tile-rows transfer-characteristics tune undershoot-pct";

/// Parameters of libaom whose values are numbers.
constexpr std::string_view kAomNumbers =
    "aq-mode arnr-maxframes arnr-strength auto-alt-ref cdf-update-mode coeff-cost-upd-freq cpu-used "
    "cq-level deltaq-mode denoise-block-size denoise-noise-level disable-trellis-quant enable-cdef "
    "enable-chroma-deltaq enable-dnl-denoising enable-fwd-kf enable-global-motion enable-intrabc "
    "enable-keyframe-filtering enable-obmc enable-palette enable-qm enable-restoration "
    "enable-smooth-interintra enable-tpl-model enable-warped-motion error-resilient film-grain-test "
    "frame-parallel gf-max-pyr-height gf-min-pyr-height lag-in-frames loopfilter-control lossless "
    "max-gf-interval max-q max-reference-frames min-cr min-gf-interval min-q mode-cost-upd-freq "
    "mv-cost-upd-freq num-tile-groups qm-max qm-min quant-b-adapt row-mt sb-size set-tier-mask "
    "sharpness static-thresh tile-columns tile-rows tune-content vbr-corpus-complexity-lap";

/// Parameters of rav1e whose values are numbers.
constexpr std::string_view kRav1eNumbers =
    "bitrate enable_timing_info error_resilient key_frame_interval low_latency min_key_frame_interval "
    "min_quantizer quantizer rdo_lookahead_frames reservoir_frame_delay speed still_picture "
    "switch_frame_interval threads tile_cols tile_rows tiles";

/// Whether `name` is one of the names, between which there is a blank.
bool Contains(std::string_view names, std::string_view name)
{
    while (!names.empty())
    {
        const std::size_t end = std::min(names.find(' '), names.size());
        if (names.substr(0, end) == name)
        {
            return true;
        }
        names.remove_prefix(std::min(end + 1, names.size()));
    }
    return false;
}

/// None of these texts is the name of anything outside the encoder.
constexpr TextRule kTexts[] = {
    {"libx264", "preset", "TAG_X264_PRESET_", "", "a speed preset of x264, as fast"},
    {"libx264", "tune", "TAG_X264_TUNE_", ",", "tunings of x264, as film or film,fastdecode"},
    {"libx264", "profile", "TAG_X264_PROFILE_", "", "a profile of x264, as high"},
    {"libx264", "level", "", ".b", "a level, as 4.1"},
    {"libx264", "wpredp", "", "", "an integer"},
    {"libx264", "psy-rd", "", ".,:", "two numbers, as 1.0:0.15"},
    {"libx264", "deblock", "", "-,:", "two integers, as -1:-1"},
    {"libx264", "partitions", "", "pixbanoel,", "partitions, as p8x8,i4x4"},
    {"libx265", "preset", "TAG_X265_PRESET_", "", "a speed preset of x265, as fast"},
    {"libx265", "tune", "TAG_X265_TUNE_", "", "a tuning of x265, as ssim"},
    {"libx265", "profile", "", "abcdefghijklmnopqrstuvwxyz-", "a profile of x265, as main10"},
    {"mpeg1video", "gop_timecode", "", ":;.", "a time, as 01:00:00:00"},
    {"mpeg2video", "gop_timecode", "", ":;.", "a time, as 01:00:00:00"},
};

/// x264 reads its matrices from a file of that name when it does not know the word.
constexpr WordRule kWords[] = {{"cqm", "flat jvt", "flat or jvt"}};

bool IsNothing(std::string_view) { return false; }
bool IsX264Number(std::string_view name) { return Contains(kX264Numbers, name); }
bool IsX264Word(std::string_view name) { return Contains(kX264Words, name); }
bool IsX265Number(std::string_view name) { return Contains(kX265Numbers, name); }
bool IsX265Word(std::string_view name) { return Contains(kX265Words, name); }
bool IsSvtAv1Number(std::string_view name) { return Contains(kSvtAv1Numbers, name); }
bool IsAomNumber(std::string_view name) { return Contains(kAomNumbers, name); }
bool IsRav1eNumber(std::string_view name) { return Contains(kRav1eNumbers, name); }

constexpr ParametersRule kParameters[] = {
    {"libx264", "x264opts", "x264", IsX264Number, IsX264Word},
    {"libx264", "x264-params", "x264", IsX264Number, IsX264Word},
    {"libx265", "x265-params", "x265", IsX265Number, IsX265Word},
    {"libsvtav1", "svtav1-params", "SVT-AV1", IsSvtAv1Number, IsNothing},
    {"libaom-av1", "aom-params", "libaom", IsAomNumber, IsNothing},
    {"librav1e", "rav1e-params", "rav1e", IsRav1eNumber, IsNothing},
};

template <class Rule, std::size_t N>
const Rule* FindRule(const Rule (&rules)[N], std::string_view encoder, std::string_view option)
{
    const Rule* const found = std::find_if(std::begin(rules), std::end(rules), [&](const Rule& rule) {
        return encoder.substr(0, rule.encoder.size()) == rule.encoder && option == rule.option;
    });
    return found == std::end(rules) ? nullptr : found;
}

} // namespace

bool WordRule::Accepts(std::string_view word) const { return Contains(words, word); }

bool IsAllowedForEncoders(std::string_view option) { return Contains(kEncoderOptions, option); }

bool IsAllowedForDecoders(std::string_view option) { return Contains(kDecoderOptions, option); }

bool IsAllowedFlag(std::string_view option, std::string_view flag)
{
    return option == "flags" ? Contains(kFlags, flag) : option != "flags2" || Contains(kFlags2, flag);
}

const TextRule* FindTextRule(std::string_view encoder, std::string_view option)
{
    return FindRule(kTexts, encoder, option);
}

const WordRule* FindWordRule(std::string_view parameter)
{
    const WordRule* const found =
        std::find_if(std::begin(kWords), std::end(kWords),
                     [parameter](const WordRule& rule) { return rule.parameter == parameter; });
    return found == std::end(kWords) ? nullptr : found;
}

const ParametersRule* FindParametersRule(std::string_view encoder, std::string_view option)
{
    return FindRule(kParameters, encoder, option);
}

} // namespace Zelnor::Media
