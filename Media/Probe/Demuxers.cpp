#include "Media/Probe/Demuxers.h"

#include "Media/FFmpeg/Calls.h"

extern "C" {
#include <libavutil/avstring.h>
}

namespace Zelnor::Media
{

namespace
{

/// Each demuxer by its first name. Left out on purpose are, beside devices and the network: "concat", "dash",
/// "hls", "imf" and "webm_dash_manifest", which name other files; "vobsub" and "mlv", which open files beside
/// theirs.
constexpr const char* kReadOneFile =
    "3dostr,4xm,aa,aac,aax,ac3,ace,acm,act,adf,adp,ads,adx,aea,afc,aiff,aix,alaw,alias_pix,alp,amr,amrnb,"
    "amrwb,anm,apc,ape,apm,apng,aptx,aptx_hd,apv,aqtitle,argo_asf,argo_brp,argo_cvg,asf,asf_o,ass,ast,au,"
    "av1,avi,avr,avs,avs2,avs3,bethsoftvid,bfi,bfstm,bin,bink,binka,bit,bitpacked,bmp_pipe,bmv,boa,bonk,"
    "brender_pix,brstm,c93,caf,cavsvideo,cdg,cdxl,cine,codec2,codec2raw,cri_pipe,daud,dcstr,dds_pipe,"
    "derf,dfa,dfpwm,dhav,dirac,dnxhd,dpx_pipe,dsf,dsicin,dss,dts,dtshd,dv,dvbsub,dvbtxt,dxa,ea,ea_cdata,"
    "eac3,epaf,evc,exr_pipe,f32be,f32le,f64be,f64le,ffmetadata,film_cpk,filmstrip,fits,flac,flic,flv,frm,"
    "fsb,fwse,g722,g723_1,g726,g726le,g729,gdv,gem_pipe,genh,gif,gif_pipe,gsm,gxf,h261,h263,h264,hca,"
    "hcom,hdr_pipe,hevc,hnm,iamf,ico,idcin,idf,iff,ifv,ilbc,image2,image2pipe,ingenient,ipmovie,ipu,"
    "ircam,iss,iv8,ivf,ivr,j2k_pipe,jacosub,jpeg_pipe,jpegls_pipe,jpegxl_anim,jpegxl_pipe,jv,kux,kvag,"
    "laf,lc3,libgme,libopenmpt,live_flv,lmlm4,loas,lrc,luodat,lvf,lxf,m4v,matroska,mca,mcc,mgsts,"
    "microdvd,mjpeg,mjpeg_2000,mlp,mm,mmf,mods,moflex,mov,mp3,mpc,mpc8,mpeg,mpegts,mpegtsraw,mpegvideo,"
    "mpjpeg,mpl2,mpsub,msf,msnwctcp,msp,mtaf,mtv,mulaw,musx,mv,mvi,mxf,mxg,nc,nistsphere,nsp,nsv,nut,nuv,"
    "obu,ogg,oma,osq,paf,pam_pipe,pbm_pipe,pcx_pipe,pfm_pipe,pgm_pipe,pgmyuv_pipe,pgx_pipe,phm_pipe,"
    "photocd_pipe,pictor_pipe,pjs,pmp,png_pipe,pp_bnk,ppm_pipe,psd_pipe,psxstr,pva,pvf,qcp,qdraw_pipe,"
    "qoa,qoi_pipe,r3d,rawvideo,rcwt,realtext,redspark,rka,rl2,rm,roq,rpl,rsd,rso,s16be,s16le,s24be,s24le,"
    "s32be,s32le,s337m,s8,sami,sbc,sbg,scc,scd,sdns,sdr2,sds,sdx,ser,sga,sgi_pipe,shn,siff,simbiosis_imx,"
    "sln,smjpeg,smk,smush,sol,sox,spdif,srt,stl,subviewer,subviewer1,sunrast_pipe,sup,svag,svg_pipe,svs,"
    "swf,tak,tedcaptions,thp,tiertexseq,tiff_pipe,tmv,truehd,tta,tty,txd,ty,u16be,u16le,u24be,u24le,"
    "u32be,u32le,u8,usm,v210,v210x,vag,vbn_pipe,vc1,vc1test,vidc,vividas,vivo,vmd,voc,vpk,vplayer,vqf,"
    "vvc,w64,wady,wav,wc3movie,webp_pipe,webvtt,wsaud,wsd,wsvqa,wtv,wv,wve,xa,xbin,xbm_pipe,xmd,xmv,"
    "xpm_pipe,xvag,xwd_pipe,xwma,yop,yuv4mpegpipe";

} // namespace

bool ReadsOneFile(const AVInputFormat& demuxer)
{
    return av_match_list(demuxer.name, kReadOneFile, ',') != 0;
}

} // namespace Zelnor::Media
