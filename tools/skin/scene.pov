// The module from the front, under studio light. One unit is one pixel of the finished picture at the
// height of the board (z = 0); x goes right, y up, z toward the viewer.
// Declare=Pass=1 renders no light but what is where: red the board, green the pane of the glass.
#version 3.7;
#ifndef (Pass) #declare Pass = 0; #end
#declare Pi2 = 6.283185307;

global_settings {
  assumed_gamma 1.0
  max_trace_level 8
  #if (Pass = 0)
    radiosity { pretrace_start .04 pretrace_end .004 count 160 nearest_count 12 error_bound .45 recursion_limit 2 low_error_factor .6 gray_threshold 0 minimum_reuse .004 brightness 1 }
  #end
}
#include "shapes.inc"

// As in shapes.py: low, so that the walls that face the viewer show a little.
#declare Eye = <292, 84, 2100>;
camera { perspective location Eye direction <292,164,0> - Eye right 584*x up 328*y }

// ---- the studio

#if (Pass = 0)
// The room: dim walls that give the shade its tone.
sphere { <292,164,0>, 6000 hollow no_image no_shadow
  pigment { gradient y color_map { [0 rgb <.16,.17,.19>] [.45 rgb <.24,.25,.27>] [.62 rgb <.50,.50,.49>] [1 rgb <.42,.43,.45>] } scale 12000 translate -6000*y }
  finish { emission .62 diffuse 0 ambient 0 } }
// A large soft box at the upper left: light by the area light, its picture in the metal by the panel.
#macro panel(Centre, Wide, High, Colour)
  #local Away = vnormalize(<292,164,0> - Centre);
  #local Side = vnormalize(vcross(y, Away));
  #local Top = vcross(Away, Side);
  // a polygon in its own plane, soft toward the rim
    polygon { 5, <-1,-1>,<1,-1>,<1,1>,<-1,1>,<-1,-1>
    pigment { boxed color_map { [0 rgbt <0,0,0,1>] [.35 rgb Colour] [1 rgb Colour*1.15] } }
    finish { emission 1 diffuse 0 ambient 0 }
    matrix <Side.x*Wide,Side.y*Wide,Side.z*Wide, Top.x*High,Top.y*High,Top.z*High, Away.x,Away.y,Away.z, Centre.x,Centre.y,Centre.z>
    no_image no_shadow no_radiosity }
#end
panel(<-480,1380,1650>, 1050, 520, 3.4*<1,.985,.95>)
panel(<1900,300,1300>, 420, 900, .9*<.88,.94,1>)
// The ceiling that faces the camera: what flat, glossy things show, brighter toward the key.
plane { -z, -2600 no_image no_shadow no_radiosity
  pigment { gradient x color_map { [0 rgb 1.0*<1,.99,.96>] [.24 rgb .85] [.40 rgb .20] [.66 rgb .08] [.76 rgb .30*<.93,.97,1>] [.86 rgb .10] [1 rgb .07*<.9,.95,1>] } scale 2600 rotate -38*z translate <-700,700,0> }
  finish { emission 1 diffuse 0 ambient 0 } }
light_source { <-620,1350,1750> rgb 1.6*<1,.98,.945>
  area_light <980,420,0>, <0,420,-360>, 11, 11 adaptive 1 jitter area_illumination on }
light_source { <1900,300,1300> rgb .46*<.88,.94,1>
  area_light <0,700,0>, <300,0,-420>, 5, 5 adaptive 1 jitter }
#end

// ---- surfaces

#macro metal(Colour, Dull, Rough)
  texture { pigment { rgb Colour }
    normal { granite Rough scale 1.6 }
    finish { diffuse Dull brilliance 2 specular .55 roughness .012 metallic reflection { .55 metallic } conserve_energy } }
#end
#declare Solder = texture { pigment { rgb <.78,.78,.76> } normal { bumps .18 scale 1.1 }
    finish { diffuse .38 specular .7 roughness .01 metallic reflection { .45 metallic } conserve_energy } }
#declare Tinned = metal(<.76,.76,.74>, .34, .06)
#declare Steel = metal(<.66,.66,.65>, .26, .05)
#declare Gilt = texture { pigment { rgb <.90,.66,.26> } normal { granite .05 scale 1.3 }
    finish { diffuse .34 specular .8 roughness .012 metallic reflection { .58 metallic } conserve_energy } }
#declare Moulded = texture { pigment { rgb <.011,.011,.012> } normal { granite .09 scale 1.0 }
    finish { diffuse .85 specular .05 roughness .03 reflection { .012, .16 fresnel } } }
#declare Epoxy = texture { pigment { rgb <.013,.013,.014> } normal { granite .12 scale .7 }
    finish { diffuse .85 specular .03 roughness .05 reflection { .008, .12 fresnel } } }
#declare Ceramic = texture { pigment { granite color_map { [0 rgb <.36,.255,.155>] [1 rgb <.42,.30,.19>] } scale 3 }
    finish { diffuse .8 specular .22 roughness .05 } }
#declare Alumina = texture { pigment { rgb <.70,.70,.67> } finish { diffuse .8 specular .15 roughness .06 } }
// Black paint from the oven: fine orange peel over the sheet.
#declare Paint = texture { pigment { rgb <.0105,.0107,.0115> }
    normal { average normal_map { [1 granite .03 scale 1.2] [1 bumps .03 scale 2.0] } }
    finish { diffuse .9 specular .12 roughness .012 reflection { .07, .7 fresnel } conserve_energy } }

#macro seen(Colour) texture { pigment { rgb Colour } finish { emission 1 diffuse 0 ambient 0 } } #end

// ---- the board

#macro hole(X, Y, Radius) cylinder { <X,Y,-40>, <X,Y,9>, Radius } #end
#declare CornerRadius = 9;
#declare Plate = difference {
  union {
    #local R = CornerRadius;
    box { <R,0,-7>, <584-R,328,0> }
    box { <0,R,-7>, <584,328-R,0> }
    cylinder { <R,R,-7>, <R,R,0>, R } cylinder { <584-R,R,-7>, <584-R,R,0>, R }
    cylinder { <R,328-R,-7>, <R,328-R,0>, R } cylinder { <584-R,328-R,-7>, <584-R,328-R,0>, R }
  }
  #include "outline.inc"
}

#if (Pass = 1)
  object { Plate seen(<1,0,0>) }
#else
  // All of it in a square of side 1, since a texture's map and what it maps are scaled together.
  #declare Mask = texture {
    pigment { image_map { png "board.png" interpolate 2 once } }
    normal { bump_map { png "relief.png" interpolate 2 once bump_size 26 } }
    finish { diffuse .86 specular .22 roughness .012 reflection { .010, .40 fresnel } conserve_energy } }
  #declare Bare = texture {
    pigment { rgb <.86,.64,.27> }
    normal { bump_map { png "relief.png" interpolate 2 once bump_size 30 } }
    finish { diffuse .44 specular .6 roughness .02 metallic reflection { .5 metallic } conserve_energy } }
  object { Plate
    texture { image_pattern { png "metal.png" interpolate 2 once } texture_map { [0 Mask] [.4 Mask] [.7 Bare] [1 Bare] } scale <584,328,1> }
    interior { ior 1.5 } }
#end

#declare Glassy = 5.2; // height of the pane above the board
box { <62,328-306,1>, <566,328-26,Glassy>
  #if (Pass = 1) seen(<0,1,0>) #else
    pigment { rgb .008 } finish { diffuse .8 reflection { .02, .5 fresnel } } interior { ior 1.5 } #end }

#if (Pass = 1)
  #declare Paint = seen(<1,0,0>)
#end
object { #include "bezel.inc" texture { Paint } interior { ior 1.5 } }

// ---- parts

#if (Pass = 0)

// A fillet of solder from the board up to the end of a part, its high side at the origin, falling to +x.
#macro fillet(Wide, Long, High)
  intersection {
    superellipsoid { <.7,.55> scale <Long,Wide,High> }
    plane { -z, 0 }
    texture { Solder } }
#end

#macro chip_ends(Half, Wide, High, End)
  union {
    #local S = -1; #while (S < 2)
      object { Round_Box(<min(S*Half,S*(Half-End)),-Wide-.08,.25>, <max(S*Half,S*(Half-End)),Wide+.08,High+.12>, .28, 0) texture { Tinned } }
      object { fillet(Wide*.98, 1.5, High*.75) translate S*(Half+.15)*x }
    #local S = S + 2; #end }
#end

#macro r0603(Name) union {
  box { <-3.1,-1.7,.3>, <3.1,1.7,1.7> texture { Alumina } }
  object { Round_Box(<-2.5,-1.66,1.5>, <2.5,1.66,2.1>, .2, 0)
    texture { pigment { image_map { png "resistor.png" interpolate 2 once } scale <5,3.4,1> translate <-2.5,-1.7,0> } finish { diffuse .9 specular .2 roughness .01 reflection { .03 } } } }
  chip_ends(3.55, 1.8, 1.85, 1.05) } #end

#macro c0603(Name) union {
  object { Round_Box(<-3.1,-1.7,.3>, <3.1,1.7,3.3>, .35, 0) texture { Ceramic } }
  chip_ends(3.6, 1.78, 3.35, 1.25) } #end

#macro led0603(Name) union {
  box { <-3.5,-1.7,.3>, <3.5,1.7,1.5> texture { pigment { rgb <.74,.74,.68> } finish { diffuse .8 } } }
  object { Round_Box(<-2.2,-1.65,1>, <2.2,1.65,3.2>, .5, 0) texture { pigment { rgb <.80,.82,.70> } finish { diffuse .75 specular .7 roughness .01 reflection .05 } } }
  box { <-1,-.6,3.1>, <.6,.6,3.24> texture { pigment { rgb <.55,.60,.18> } finish { diffuse .8 } } }
  chip_ends(3.7, 1.7, 1.3, 1.0) } #end

#macro lead(Side, Place, Reach, Wide, Step)
  union {
    box { <Reach-3.2,-Wide,.35>, <Reach,Wide,1.0> }
    box { <Reach-4.0,-Wide,.35>, <Reach-3.2,Wide,Step> rotate 0 }
    box { <Reach-6.4,-Wide,Step-.7>, <Reach-3.2,Wide,Step> }
    object { fillet(Wide*1.15, 1.3, .95) translate Reach*x }
    object { fillet(Wide*1.1, 1.2, 1.4) translate (Reach-4.0)*x }
    texture { Tinned }
    #if (Side < 0) rotate 180*z #end
    translate Place*y }
#end

#macro so8(Name) union {
  difference {
    intersection {
      object { Round_Box(<-8.8,-11,.8>, <8.8,11,6.8>, .35, 0) }
      plane { x, 0 rotate -7*y translate <8.6,0,3.6> } plane { -x, 0 rotate 7*y translate <-8.6,0,3.6> }
      plane { y, 0 rotate 7*x translate <0,10.8,3.6> } plane { -y, 0 rotate -7*x translate <0,-10.8,3.6> } }
    cylinder { <-5.6,7.8,6.4>, <-5.6,7.8,8>, 1.25 }
    texture { Epoxy } }
  box { <-5.8,-9,6.7>, <7.6,8,6.86>
    texture { pigment { image_map { png "so8.png" interpolate 2 once } scale <13.4,17,1> translate <-5.8,-9,0> } normal { granite .12 scale .7 } finish { diffuse .85 specular .03 roughness .05 reflection { .008, .12 fresnel } } } }
  #local I = 0; #while (I < 4)
    lead(1, -8.4+5.6*I, 13.4, 1.0, 3.9) lead(-1, -8.4+5.6*I, 13.4, 1.0, 3.9)
  #local I = I + 1; #end
  interior { ior 1.5 } } #end

#macro sot23(Name) union {
  object { Round_Box(<-2.9,-6.2,.5>, <2.9,6.2,4.6>, .5, 0) texture { Epoxy } }
  lead(-1, 4.2, 5.6, .9, 2.2) lead(-1, -4.2, 5.6, .9, 2.2) lead(1, 0, 5.6, .9, 2.2) } #end

#macro tantal(Name) union {
  object { Round_Box(<-7.2,-4.3,.8>, <7.2,4.3,7.8>, .5, 0) texture { pigment { rgb <.50,.245,.035> } normal { granite .08 scale .8 } finish { diffuse .8 specular .1 roughness .03 } } }
  box { <-6.9,-4.0,7.7>, <6.9,4.0,7.9> texture { pigment { image_map { png "tantal.png" interpolate 2 once } scale <13.8,8,1> translate <-6.9,-4,0> } normal { granite .08 scale .8 } finish { diffuse .8 specular .1 roughness .03 } } }
  box { <-6.9,-4.02,7.75>, <-4.4,4.02,7.96> texture { pigment { rgb <.16,.075,.012> } finish { diffuse .8 specular .2 roughness .06 } } }
  #local S = -1; #while (S < 2)
    box { <S*7.9-.45,-2.9,.3>, <S*7.9+.45,2.9,4.2> texture { Tinned } }
    object { fillet(3.4, 1.9, 1.9) translate S*8.2*x }
  #local S = S + 2; #end } #end

#macro trimmer(Name) union {
  difference {
    object { Round_Box(<-11.6,-11.6,1>, <11.6,11.6,17>, .9, 0) }
    cylinder { <0,0,15.4>, <0,0,20>, 7.6 }
    texture { pigment { rgb <.012,.065,.30> } normal { granite .05 scale 2 } finish { diffuse .85 specular .15 roughness .012 reflection { .03, .4 fresnel } } } }
  difference {
    union { cylinder { <0,0,14>, <0,0,16.9>, 7.0 } torus { 6.55, .45 rotate 90*x translate 16.9*z } cylinder { <0,0,16>, <0,0,17.35>, 6.55 } }
    box { <-6.2,-.95,15.6>, <6.2,.95,19> } box { <-.95,-6.2,15.6>, <.95,6.2,19> }
    cylinder { <0,0,16.2>, <0,0,19>, 1.7 }
    texture { pigment { rgb <.74,.60,.34> } normal { wood .10 scale .55 turbulence .02 } finish { diffuse .38 specular .7 roughness .02 metallic reflection { .38 metallic } conserve_energy } }
    rotate 27*z }
  // a white arrow and the foot
  prism { linear_sweep linear_spline 0, .1, 4, <-1.4,0>, <1.4,0>, <0,-2.2>, <-1.4,0> rotate 90*x translate <9.6,-10.4,17.1> scale <1,1,1> pigment { rgb .75 } finish { diffuse .8 } }
  box { <-10,-10,0>, <10,10,1.2> texture { Moulded } }
  interior { ior 1.5 } } #end

#macro elcap(Name) union {
  // base with two corners cut
  difference {
    object { Round_Box(<-13.8,-13.8,.4>, <13.8,13.8,4.6>, .6, 0) }
    box { <-20,0,-1>, <0,20,9> rotate -45*z translate <-13.8-1.2,13.8-5.2,0> }
    box { <-20,-20,-1>, <0,0,9> rotate 45*z translate <-13.8-1.2,-13.8+5.2,0> }
    texture { Moulded } }
  box { <-17.2,-1.6,.3>, <-12,1.6,1.1> texture { Tinned } } box { <12,-1.6,.3>, <17.2,1.6,1.1> texture { Tinned } }
  object { fillet(2.2, 1.6, 1.0) translate 16.8*x } object { fillet(2.2, 1.6, 1.0) translate -16.8*x }
  // sleeve and can
  lathe { cubic_spline 13, <12.4,2>, <12.4,3>, <12.6,6>, <11.7,8>, <12.6,10>, <12.7,20>, <12.65,27>, <12.2,28.6>, <11.3,29.1>, <10.7,28.9>, <10.3,28.6>, <9.8,28.5>, <0,28.5>
    rotate 90*x
    texture { pigment { rgb <.80,.80,.80> } normal { granite .03 scale 3 } finish { diffuse .33 specular .6 roughness .02 metallic reflection { .52 metallic } conserve_energy } } }
  // the printed disc
  difference {
    cylinder { <0,0,28.3>, <0,0,28.62>, 10.5 }
    texture { pigment { image_map { png "can.png" interpolate 2 once } scale <21,21,1> translate <-10.5,-10.5,0> }
      normal { granite .05 scale .8 } finish { diffuse .62 specular .12 roughness .03 metallic reflection { .14 metallic } } } }
  intersection {
    cylinder { <0,0,28.3>, <0,0,28.66>, 10.4 } plane { x, -4.9 }
    texture { pigment { rgb <.012,.013,.02> } finish { diffuse .9 specular .04 roughness .05 reflection .02 } } }
  rotate 0*z } #end

#macro pin(High)
  union {
    box { <-1.42,-1.42,0>, <1.42,1.42,High-2> }
    // the swaged tip
    prism { conic_sweep linear_spline .52, 1, 5, <-1.42,-1.42>, <1.42,-1.42>, <1.42,1.42>, <-1.42,1.42>, <-1.42,-1.42> rotate -90*x scale <1,1,-4.2> translate (High+2.2)*z }
    texture { Gilt } }
#end

#macro header(Rows, Pitch) union {
  #local High = 32;
  #local J = 0; #while (J < Rows)
    #local Y = (J-(Rows-1)/2)*Pitch;
    intersection {
      object { Round_Box(<-Pitch,-Pitch/2-.02,.4>, <Pitch,Pitch/2+.02,10.8>, .35, 0) }
      // each cell is an octagon, so that cells break apart
      #local C = Pitch/2-1.6;
      plane { x+y, 0 translate <Pitch,C,0> } plane { x-y, 0 translate <Pitch,-C,0> }
      plane { -x+y, 0 translate <-Pitch,C,0> } plane { -x-y, 0 translate <-Pitch,-C,0> }
      texture { Moulded } translate Y*y }
    #local S = -1; #while (S < 2)
      object { pin(High) rotate (2*rand(Tilt)-1)*1.1*x rotate (2*rand(Tilt)-1)*1.1*y translate <S*Pitch/2,Y,0> }
    #local S = S + 2; #end
  #local J = J + 1; #end
  interior { ior 1.5 } } #end

#macro screw() union {
  difference {
    intersection { sphere { <0,0,-4.6>, 10.6 } cylinder { <0,0,0>, <0,0,9>, 7.3 } }
    union { box { <-4.6,-.95,3.2>, <4.6,.95,9> } box { <-.95,-4.6,3.2>, <.95,4.6,9> } cone { <0,0,2.6>, .6, <0,0,7>, 2.3 } }
    texture { pigment { rgb <.72,.72,.70> } normal { wood .05 scale .8 turbulence .05 } finish { diffuse .3 specular .6 roughness .02 metallic reflection { .5 metallic } conserve_energy } } }
  cylinder { <0,0,0>, <0,0,1.5>, 7.3 texture { Steel } }
  // a flat washer
  difference { cylinder { <0,0,0>, <0,0,1.1>, 8.6 } cylinder { <0,0,-1>, <0,0,2>, 5 } texture { Steel } }
  } #end

// A tab of the bezel, bent outward (+y) and pushed through its slot.
#macro tab() union {
  box { <-6,-1,0>, <6,.9,7.5> texture { Paint } }
  object { Round_Box(<-4.6,-1,.4>, <4.6,2.2,1.8>, .4, 0) texture { Paint } }
  // soldered to the ground
  difference {
    superellipsoid { <.75,.7> scale <5.4,2.6,1.9> translate 2.6*y }
    plane { z, 0 } texture { Solder } }
  interior { ior 1.5 } } #end

#declare Tilt = seed(11);
#include "layout.inc"

#else

// What parts hide of the pane and add to the outline: nothing; all of them stand on the board.

#end
