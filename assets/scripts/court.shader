// Surfaces of the court that move or shine. A face uses one whose name is that of its texture.

// The bottom of a pool, on it a drifting, shining layer that reflects, and the light that falls on both.
textures/court/water
{
	surfaceparm water
	surfaceparm trans
	tessSize 64
	{
		map textures/court/water.tga
	}
	{
		map textures/court/water.tga
		blendFunc GL_SRC_COLOR GL_ONE
		tcMod scale 0.7 0.7
		tcMod scroll -0.03 0.01
		tcMod turb 0 0.05 0 0.2
	}
	{
		map $lightmap
		blendFunc filter
	}
}

// A flame that flickers through three pictures over its lamp.
textures/court/lamp
{
	surfaceparm nolightmap
	cull none
	{
		map textures/court/lamp.tga
	}
	{
		animMap 8 textures/court/flame1.tga textures/court/flame2.tga textures/court/flame3.tga
		blendFunc add
	}
}

// Clouds around the whole level, seen wherever a surface has this name.
textures/court/sky
{
	surfaceparm sky
	{
		map textures/court/sky.tga
	}
}

// Gilded trim: the picture, a reflection that moves with the view, and the light of its place.
textures/court/gold
{
	{
		map textures/court/gold.tga
	}
	{
		map textures/court/gold.tga
		blendFunc GL_DST_COLOR GL_ONE
		tcMod scale 0.5 0.5
	}
	{
		map $lightmap
		blendFunc GL_DST_COLOR GL_ZERO
	}
}

// Leaded glass that tints what is seen through it.
textures/court/glass
{
	surfaceparm trans
	cull none
	{
		map textures/court/glass.tga
		blendFunc GL_DST_COLOR SRCCOLOR
	}
}
