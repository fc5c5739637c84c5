/* Shared by hosts and plug-ins: the OpenGL 1.1 functions that a host exports, and their constants. C11 and C++. */
#ifndef TOVU_HOST_OPENGL_H
#define TOVU_HOST_OPENGL_H

/*
 * Each function is the OpenGL function of the same name after the prefix `ormixGL_`, with the same prototype. The types
 * are written out, so no OpenGL header is needed; one may be included before or after this header.
 *
 * Callable inside PLUGIN_RENDER_OPENGL, where the host's context is current; `ormixGL_glTexCoordPointer`, which only
 * stores an address, also in PLUGIN_INIT_FUNCTION. The host does not copy the plug-in's arrays: OpenGL reads them in
 * `ormixGL_glDrawArrays`, so they must stay valid until then.
 *
 * At the start of a pass GL_PROJECTION is projection × view and GL_MODELVIEW is the container's transformation: drawing
 * is in container coordinates, or in world coordinates after loading the identity. Texture coordinates run from 0 to
 * 32767 across the texture. The host sets texture, material, blend and alpha-test functions. Match every push by a pop.
 */

#ifndef GL_POINTS
/* primitives: glBegin, glDrawArrays */
#define GL_POINTS 0x0000
#define GL_LINES 0x0001
#define GL_LINE_LOOP 0x0002
#define GL_LINE_STRIP 0x0003
#define GL_TRIANGLES 0x0004
#define GL_TRIANGLE_STRIP 0x0005
#define GL_TRIANGLE_FAN 0x0006
#define GL_QUADS 0x0007
#define GL_QUAD_STRIP 0x0008
#define GL_POLYGON 0x0009
/* flags: glDepthMask */
#define GL_FALSE 0
#define GL_TRUE 1
/* element types: glVertexPointer, glColorPointer, glTexCoordPointer */
#define GL_BYTE 0x1400
#define GL_UNSIGNED_BYTE 0x1401
#define GL_SHORT 0x1402
#define GL_UNSIGNED_SHORT 0x1403
#define GL_INT 0x1404
#define GL_UNSIGNED_INT 0x1405
#define GL_FLOAT 0x1406
#define GL_DOUBLE 0x140A
/* capabilities: glEnable, glDisable */
#define GL_POINT_SMOOTH 0x0B10
#define GL_LINE_SMOOTH 0x0B20
#define GL_LINE_STIPPLE 0x0B24
#define GL_CULL_FACE 0x0B44
#define GL_LIGHTING 0x0B50
#define GL_COLOR_MATERIAL 0x0B57
#define GL_FOG 0x0B60
#define GL_DEPTH_TEST 0x0B71
#define GL_STENCIL_TEST 0x0B90
#define GL_NORMALIZE 0x0BA1
#define GL_ALPHA_TEST 0x0BC0
#define GL_DITHER 0x0BD0
#define GL_BLEND 0x0BE2
#define GL_SCISSOR_TEST 0x0C11
#define GL_TEXTURE_1D 0x0DE0
#define GL_TEXTURE_2D 0x0DE1
/* hints: glHint */
#define GL_PERSPECTIVE_CORRECTION_HINT 0x0C50
#define GL_POINT_SMOOTH_HINT 0x0C51
#define GL_LINE_SMOOTH_HINT 0x0C52
#define GL_POLYGON_SMOOTH_HINT 0x0C53
#define GL_FOG_HINT 0x0C54
#define GL_DONT_CARE 0x1100
#define GL_FASTEST 0x1101
#define GL_NICEST 0x1102
/* matrix modes: glMatrixMode */
#define GL_MODELVIEW 0x1700
#define GL_PROJECTION 0x1701
#define GL_TEXTURE 0x1702
/* client arrays: glEnableClientState, glDisableClientState */
#define GL_VERTEX_ARRAY 0x8074
#define GL_NORMAL_ARRAY 0x8075
#define GL_COLOR_ARRAY 0x8076
#define GL_INDEX_ARRAY 0x8077
#define GL_TEXTURE_COORD_ARRAY 0x8078
#define GL_EDGE_FLAG_ARRAY 0x8079
/* pixel formats: _api__get_image_format */
#define GL_ALPHA 0x1906
#define GL_RGB 0x1907
#define GL_RGBA 0x1908
#define GL_LUMINANCE 0x1909
#define GL_LUMINANCE_ALPHA 0x190A
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Begins primitives of the kind `mode`, GL_POINTS to GL_POLYGON. Their vertices follow, up to glEnd. */
void ormixGL_glBegin(unsigned int mode);
/** Ends the primitives. Between glBegin and glEnd only the next five functions are allowed. */
void ormixGL_glEnd(void);
/** A vertex, in the coordinates that GL_MODELVIEW transforms from. */
void ormixGL_glVertex3f(float x, float y, float z);
/** A vertex from three floats, read during the call. */
void ormixGL_glVertex3fv(const float* xyz);
/** Colour of the following vertices, components 0 to 1; alpha 1 is opaque. */
void ormixGL_glColor4f(float red, float green, float blue, float alpha);
/** The same with components 0 to 255. */
void ormixGL_glColor4ub(unsigned char red, unsigned char green, unsigned char blue, unsigned char alpha);
/** Texture coordinates of the following vertices, 0 to 32767 across the texture. */
void ormixGL_glTexCoord2s(short s, short t);
/**
 * Vertices for glDrawArrays: `size` elements of `type` each, `stride` bytes from one to the next, or 0 if packed. The
 * plug-in owns the array.
 */
void ormixGL_glVertexPointer(int size, unsigned int type, int stride, const void* pointer);
/** Colours, likewise. Integer types use their full range for 0 to 1. */
void ormixGL_glColorPointer(int size, unsigned int type, int stride, const void* pointer);
/** Texture coordinates, likewise; not scaled by their type. */
void ormixGL_glTexCoordPointer(int size, unsigned int type, int stride, const void* pointer);
/** Draws `count` vertices of the enabled arrays from index `first` on. Reads the arrays during the call. */
void ormixGL_glDrawArrays(unsigned int mode, int first, int count);
/** Makes glDrawArrays use a client array, GL_VERTEX_ARRAY to GL_EDGE_FLAG_ARRAY. */
void ormixGL_glEnableClientState(unsigned int array);
/** Makes glDrawArrays ignore a client array. */
void ormixGL_glDisableClientState(unsigned int array);
/** Switches a capability on. */
void ormixGL_glEnable(unsigned int capability);
/** Switches a capability off. */
void ormixGL_glDisable(unsigned int capability);
/** Whether drawing writes depth: GL_TRUE or GL_FALSE. */
void ormixGL_glDepthMask(unsigned char flag);
/** Speed or quality for `target`, one of the hints: `mode` is GL_FASTEST, GL_NICEST or GL_DONT_CARE. */
void ormixGL_glHint(unsigned int target, unsigned int mode);
/** Width of lines, pixels. */
void ormixGL_glLineWidth(float width);
/** Size of points, pixels. */
void ormixGL_glPointSize(float size);
/** Selects the matrix that the next five functions change: GL_MODELVIEW, GL_PROJECTION or GL_TEXTURE. */
void ormixGL_glMatrixMode(unsigned int mode);
/** Sets the matrix to the identity. */
void ormixGL_glLoadIdentity(void);
/** Pushes a copy of the matrix on the stack. */
void ormixGL_glPushMatrix(void);
/** Restores the matrix pushed last. */
void ormixGL_glPopMatrix(void);
/** Multiplies the matrix on its right by 16 floats in column order, read during the call. */
void ormixGL_glMultMatrixf(const float* matrix);
/** Multiplies the matrix on its right by a translation. */
void ormixGL_glTranslatef(float x, float y, float z);

#ifdef __cplusplus
}
#endif

#endif
